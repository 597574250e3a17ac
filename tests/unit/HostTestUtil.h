// Helpers shared by the tests: a temporary directory for scripts and files
// (removed with everything in it at the end), and a headless desktop installed for one test so
// that printed text and error boxes can be read back.
#pragma once

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace ob::test {

class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ob-host-XXXXXX").string();
        if (!mkdtemp(pattern.data())) std::abort();
        m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string Path(const std::string& name) const { return (m_path / name).string(); }
    CString WPath(const std::string& name) const { return CString::FromUtf8(Path(name)); }
    const std::filesystem::path& Dir() const { return m_path; }

    // Writes a file (8-bit text) and returns its path.
    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream out(m_path / name, std::ios::binary | std::ios::trunc);
        out << text;
        return Path(name);
    }

private:
    std::filesystem::path m_path;
};

// A headless desktop that is the process's desktop for its lifetime.
class ScopedDesktop : public ui::HeadlessDesktop {
public:
    ScopedDesktop() { ui::SetDesktop(this); }
    ~ScopedDesktop() override { ui::SetDesktop(nullptr); }

    // The texts of "print" statements (boxes of the default style) without
    // their final line feed, in order.
    std::vector<std::string> Printed() const {
        std::vector<std::string> lines;
        for (const Box& box : Boxes())
            if (box.style == ui::MB_OK) {
                std::string text = box.text.ToUtf8();
                if (!text.empty() && text.back() == '\n') text.pop_back();
                lines.push_back(text);
            }
        return lines;
    }
    // The texts of error boxes, in order.
    std::vector<std::string> Errors() const {
        std::vector<std::string> texts;
        for (const Box& box : Boxes())
            if (box.style != ui::MB_OK) texts.push_back(box.text.ToUtf8());
        return texts;
    }
};

// A test with one interpreter made while a headless desktop is current, so
// that the boxes it shows can be read back.
class InterpreterTest : public ::testing::Test {
protected:
    void SetUp() override {
        ui::SetDesktop(&m_desktop);
        m_basic = std::make_unique<COrvoBasic>();
    }
    void TearDown() override {
        m_basic.reset();
        ui::SetDesktop(nullptr);
    }
    COrvoBasic& B() { return *m_basic; }

    ui::HeadlessDesktop m_desktop;
    std::unique_ptr<COrvoBasic> m_basic;
};

}  // namespace ob::test
