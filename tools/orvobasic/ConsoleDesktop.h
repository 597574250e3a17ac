// The runner's desktop: printed text goes to stdout verbatim, reported
// errors to stderr as "SCRIPT:LINE: error N: MESSAGE" plus the source line
// and, inside a user function, the calls that led there; error boxes are answered as the command line says.
#pragma once

#include <orvobasic/desktop.h>

#include <atomic>
#include <cstdio>

namespace ob::runner {

enum class OnError { Continue, Abort, Ask };

class ConsoleDesktop : public ob::ui::Desktop {
public:
    explicit ConsoleDesktop(OnError mode) : m_mode(mode) {}

    int MessageBox(const CString& text, unsigned style) override;
    void PrintBox(const CString& text) override;
    int ErrorBox(const ob::ui::ErrorReport& report) override;
    void ResourceFallbackBox(const CString& text) override;

    int ErrorCount() const { return m_errors; }

private:
    bool AskToContinue();
    static void PrintCallChain(const ob::ui::ErrorReport& report);

    OnError m_mode;
    std::atomic<int> m_errors{0};   // scripts on several threads may report at once
};

}  // namespace ob::runner
