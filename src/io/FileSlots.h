// Numbered file slots 1..256 of an interpreter.
//
// A slot holds either a plain binary file or a line-oriented text file; the
// holder owns the object, and destroying the holder closes the file.
#pragma once

#include "io/CTextFileLoc.h"
#include "platform/CFile.h"

#include <cstdint>
#include <map>
#include <memory>

namespace ob {

// One open file: exactly one of the two objects is set.
class CFileHolder {
public:
    explicit CFileHolder(std::unique_ptr<platform::CFile> file) : m_file(std::move(file)) {}
    explicit CFileHolder(std::unique_ptr<CTextFileLoc> text) : m_text(std::move(text)) {}

    bool IsTextFile() const { return m_text != nullptr; }
    // The object for byte operations, whichever kind it is.
    platform::CFile& File() { return m_text ? *m_text : *m_file; }
    // The text file; null for a binary slot.
    CTextFileLoc* TextFile() { return m_text.get(); }

private:
    std::unique_ptr<platform::CFile> m_file;
    std::unique_ptr<CTextFileLoc> m_text;
};

class CFileSlotTable {
public:
    static constexpr int kFirstSlot = 1;
    static constexpr int kLastSlot = 256;

    // Stores the holder under `number`, closing a file already there first.
    void Add(uint16_t number, std::unique_ptr<CFileHolder> holder);
    // The holder under `number`; null when none (also for numbers that no
    // slot can have).
    CFileHolder* Find(int64_t number);
    // Closes the file under `number`; false when none is open there.
    bool Close(int64_t number);
    void CloseAll();
    size_t Count() const { return m_slots.size(); }

private:
    std::map<uint16_t, std::unique_ptr<CFileHolder>> m_slots;
};

}  // namespace ob
