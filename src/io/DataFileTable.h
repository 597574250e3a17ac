// Open dBase tables of an interpreter, named by their index.
//
// A handle is the table's position in the list at the moment of use: closing
// a table moves every later one down by one, so a script that held handles 0
// and 1 and closed 0 reaches its second table as 0.
#pragma once

#include <orvobasic/CDbf.h>
#include <orvobasic/CString.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace ob {

// An open data file of some format. Destroying it closes it.
class CDataFile {
public:
    enum Kind { kBase = 0, kDbase = 1 };
    virtual ~CDataFile() = default;
    virtual bool Close() { return true; }
    virtual bool Open(const CString& name, int mode) { (void)name; (void)mode; return false; }
    Kind GetKind() const { return m_kind; }

protected:
    explicit CDataFile(Kind kind) : m_kind(kind) {}

private:
    Kind m_kind;
};

// A dBase table, opened without a template.
class CDbfDataFile : public CDataFile {
public:
    CDbfDataFile() : CDataFile(kDbase) {}
    bool Close() override { return m_dbf.Close(); }
    // May throw CFileException for a table cut short.
    bool Open(const CString& name, int mode) override { return m_dbf.Open(name, mode, nullptr); }
    CDbf& Dbf() { return m_dbf; }

private:
    CDbf m_dbf;
};

class CDataFileTable {
public:
    // Appends the file; returns its handle.
    int Add(std::unique_ptr<CDataFile> file);
    // The file under `handle`; null when the handle names none.
    CDataFile* Find(int64_t handle);
    // Destroys the file under `handle` (closing it) and moves later files
    // down by one; false when the handle names none.
    bool Close(int64_t handle);
    void CloseAll();
    size_t Count() const { return m_files.size(); }

private:
    std::vector<std::unique_ptr<CDataFile>> m_files;
};

}  // namespace ob
