#include "FuzzSupport.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace ob::fuzz {

Environment& Environment::Get() {
    // Never destroyed: the exit handler below still needs the directory.
    static Environment* environment = new Environment;
    return *environment;
}

// In memory when the system offers it: inputs are written once per run.
Environment::Environment() {
    std::string base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
    std::string pattern = base + "/ob-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) std::abort();
    m_dir = pattern;
    ui::SetDesktop(&m_desktop);
    std::atexit([] { std::filesystem::remove_all(Get().m_dir); });
}

std::string Environment::Write(const std::string& name, const uint8_t* data, size_t size) const {
    std::string path = Path(name);
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) std::abort();
    if (size > 0 && std::fwrite(data, 1, size, f) != size) std::abort();
    std::fclose(f);
    return path;
}

void ApplySmallBudgets(COrvoBasic& script) {
    Budgets budgets;
    budgets.maxSteps = 1000;
    budgets.timeoutMs = 250;
    budgets.maxDepth = 64;
    budgets.maxCells = 5000;
    budgets.maxMemory = 8'000'000;
    script.SetBudgets(budgets);
}

}  // namespace ob::fuzz
