// Encrypted scripts and included files through the orvobasic runner: the
// encrypted copy runs on its own, a damaged one or another key is a load
// error (exit status 2), --key-file, and traces naming included files.
#include "HostTestUtil.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string out, err;
};

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteAll(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Runs the runner in `dir` with `args` (shell words, already quoted as needed).
Outcome RunIn(const fs::path& dir, const std::string& args) {
    std::string command = "cd '" + dir.string() + "' && '" + std::string(OB_BUILD_DIR) +
                          "/orvobasic' --on-error=continue " + args + " </dev/null >.out 2>.err";
    int raw = std::system(command.c_str());
    Outcome o;
    o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    o.out = ReadAll(dir / ".out");
    o.err = ReadAll(dir / ".err");
    EXPECT_EQ(o.err.find("Sanitizer"), std::string::npos) << o.err;
    return o;
}

class SourcesRunner : public ::testing::Test {
protected:
    // Writes the program of three files and runs it once, which leaves copy.obe behind.
    Outcome MakeCopy(const std::string& keyOption = "") {
        WriteAll(m_dir.Dir() / "a/main.bas", "encrypt \"copy.obe\"\nprint \"main\"\ninclude \"part.inc\"\n"
                                             "library \"lib/funcs.inc\"\nprint twice(21)\n");
        WriteAll(m_dir.Dir() / "a/part.inc", "print \"part\"\n");
        WriteAll(m_dir.Dir() / "a/lib/funcs.inc", "function twice(n)\ntwice = n * 2\nendfunction\n");
        return RunIn(m_dir.Dir(), keyOption + " a/main.bas");
    }
    fs::path Copy() const { return m_dir.Dir() / "copy.obe"; }

    ob::test::TempDir m_dir;
};

const char kExpectedOutput[] = "main\npart\n42.000000\n";

TEST_F(SourcesRunner, EncryptedCopyRunsOnItsOwnWithTheSameOutput) {
    Outcome plain = MakeCopy();
    ASSERT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.out, kExpectedOutput);
    std::string sealed = ReadAll(Copy());
    EXPECT_EQ(sealed.find("print"), std::string::npos);   // no plain text in it
    WriteAll(m_dir.Dir() / "alone/copy.obe", sealed);
    Outcome encrypted = RunIn(m_dir.Dir() / "alone", "copy.obe");
    EXPECT_EQ(encrypted.status, 0) << encrypted.err;
    EXPECT_EQ(encrypted.out, kExpectedOutput);
    EXPECT_EQ(ReadAll(m_dir.Dir() / "alone/copy.obe"), sealed);   // it did not write itself again
}

TEST_F(SourcesRunner, DamagedCutOrForeignCopyIsALoadError) {
    ASSERT_EQ(MakeCopy().status, 0);
    std::string sealed = ReadAll(Copy());
    std::string flipped = sealed;
    flipped[sealed.size() / 2] = static_cast<char>(flipped[sealed.size() / 2] ^ 0x10);
    const std::string variants[] = {flipped, sealed.substr(0, sealed.size() / 2), sealed.substr(0, 10),
                                    sealed.substr(0, sealed.size() - 1)};
    for (const std::string& bytes : variants) {
        WriteAll(Copy(), bytes);
        Outcome o = RunIn(m_dir.Dir(), "copy.obe");
        EXPECT_EQ(o.status, 2) << o.err;
        EXPECT_EQ(o.out, "");
        EXPECT_NE(o.err.find("copy.obe:0: error 112: "), std::string::npos) << o.err;
    }
    WriteAll(Copy(), sealed);
    WriteAll(m_dir.Dir() / "other.key", "not the key it was made with");
    Outcome foreign = RunIn(m_dir.Dir(), "--key-file=other.key copy.obe");
    EXPECT_EQ(foreign.status, 2);
    EXPECT_NE(foreign.err.find("error 112"), std::string::npos) << foreign.err;
}

TEST_F(SourcesRunner, KeyFileMakesAndOpensCopies) {
    WriteAll(m_dir.Dir() / "my.key", "sesame\r\n");   // the final line end is not part of the key
    WriteAll(m_dir.Dir() / "same.key", "sesame");
    ASSERT_EQ(MakeCopy("--key-file my.key").status, 0);
    Outcome withKey = RunIn(m_dir.Dir(), "--key-file=same.key copy.obe");
    EXPECT_EQ(withKey.status, 0) << withKey.err;
    EXPECT_EQ(withKey.out, kExpectedOutput);
    EXPECT_EQ(RunIn(m_dir.Dir(), "copy.obe").status, 2);   // the built-in key does not open it
}

TEST_F(SourcesRunner, UnusableKeyFileIsABadCommandLine) {
    WriteAll(m_dir.Dir() / "s.bas", "print 1\n");
    WriteAll(m_dir.Dir() / "empty.key", "\n");
    WriteAll(m_dir.Dir() / "long.key", std::string(57, 'k'));
    EXPECT_EQ(RunIn(m_dir.Dir(), "--key-file=empty.key s.bas").status, 64);
    EXPECT_EQ(RunIn(m_dir.Dir(), "--key-file=long.key s.bas").status, 64);
    EXPECT_EQ(RunIn(m_dir.Dir(), "--key-file=missing.key s.bas").status, 64);
    EXPECT_EQ(RunIn(m_dir.Dir(), "s.bas --key-file").status, 64);
}

TEST_F(SourcesRunner, TraceAndErrorsNameTheIncludedFile) {
    WriteAll(m_dir.Dir() / "t.bas", "a = 1\ninclude \"inc/i.bas\"\nc = 3\n");
    WriteAll(m_dir.Dir() / "inc/i.bas", "b = 2\ngoto nope\n");
    Outcome o = RunIn(m_dir.Dir(), "--trace t.bas");
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.err, "t.bas:1: trace\ninc/i.bas:1: trace\ninc/i.bas:2: trace\n"
                     "inc/i.bas:2: error 7: Duplicate label\n    goto nope\nt.bas:3: trace\n");
}

}  // namespace
