// What the fuzz targets share: a desktop that shows nothing (every box is
// answered OK, so a run goes on past its errors), a scratch directory of the
// process for the files an input becomes, and the budgets that keep one
// input from running long.
#pragma once

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace ob::fuzz {

class SilentDesktop : public ui::Desktop {
public:
    int MessageBox(const CString&, unsigned) override { return ui::IDOK; }
    void PrintBox(const CString&) override {}
    int ErrorBox(const ui::ErrorReport&) override { return ui::IDOK; }
    void ResourceFallbackBox(const CString&) override {}
};

// Installed once per process: the silent desktop and the scratch directory.
class Environment {
public:
    static Environment& Get();

    // Writes `data` to `name` in the scratch directory; returns its path.
    std::string Write(const std::string& name, const uint8_t* data, size_t size) const;
    std::string Path(const std::string& name) const { return m_dir + "/" + name; }

private:
    Environment();

    SilentDesktop m_desktop;
    std::string m_dir;
};

// Small budgets: an input ends after a thousand statements, a quarter of a
// second, shallow recursion, a few thousand cells or a few megabytes.
void ApplySmallBudgets(COrvoBasic& script);

}  // namespace ob::fuzz
