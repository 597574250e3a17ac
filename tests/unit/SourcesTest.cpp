// Script sources in the interpreter: the encrypted file format and its key,
// the load-time statements, and where errors and the line hook say a
// statement stands once included and library files are merged in.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"
#include "engine/ScriptCipher.h"
#include "engine/SourceLoader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using ob::SourceDirective;

// Restores the built-in script key when a test ends.
struct DefaultKeyAfterwards {
    ~DefaultKeyAfterwards() { OB_SetScriptKey(nullptr, 0); }
};

bool Key(const std::string& key) {
    return OB_SetScriptKey(reinterpret_cast<const uint8_t*>(key.data()), static_cast<int32_t>(key.size())) == 1;
}

TEST(ScriptCipher, RoundTripWithAFreshIvEachTime) {
    const std::string plain = "print \"x\"\r\n\x80\xff tail";
    std::string first, second, back;
    ASSERT_TRUE(ob::EncryptScript(plain, first));
    ASSERT_TRUE(ob::EncryptScript(plain, second));
    EXPECT_NE(first, second);
    EXPECT_TRUE(ob::IsEncryptedScript(first));
    EXPECT_FALSE(ob::IsEncryptedScript(plain));
    ASSERT_TRUE(ob::DecryptScript(first, back));
    EXPECT_EQ(back, plain);
    ASSERT_TRUE(ob::EncryptScript("", first));   // an empty script still has a padding block
    ASSERT_TRUE(ob::DecryptScript(first, back));
    EXPECT_EQ(back, "");
}

TEST(ScriptCipher, EveryCutFlippedBitOrExtraByteIsRefused) {
    std::string sealed, plain;
    ASSERT_TRUE(ob::EncryptScript("print 1\nprint 2\n", sealed));
    for (size_t length = 0; length < sealed.size(); ++length)
        EXPECT_FALSE(ob::DecryptScript(sealed.substr(0, length), plain)) << "cut at " << length;
    for (size_t i = 0; i < sealed.size(); ++i)
        for (int bit = 0; bit < 8; ++bit) {
            std::string damaged = sealed;
            damaged[i] = static_cast<char>(damaged[i] ^ (1 << bit));
            EXPECT_FALSE(ob::DecryptScript(damaged, plain)) << "byte " << i << " bit " << bit;
        }
    EXPECT_FALSE(ob::DecryptScript(sealed + '\0', plain));
}

TEST(ScriptCipher, OnlyTheKeyItWasMadeWithOpensIt) {
    DefaultKeyAfterwards restore;
    std::string sealed, plain;
    ASSERT_TRUE(ob::EncryptScript("secret", sealed));
    ASSERT_TRUE(Key("another key"));
    EXPECT_FALSE(ob::DecryptScript(sealed, plain));
    std::string mine;
    ASSERT_TRUE(ob::EncryptScript("mine", mine));
    ASSERT_TRUE(ob::DecryptScript(mine, plain));
    // Refused keys leave the current one in place.
    EXPECT_FALSE(Key(std::string(57, 'k')));
    EXPECT_EQ(OB_SetScriptKey(reinterpret_cast<const uint8_t*>("x"), -1), 0);
    EXPECT_TRUE(ob::DecryptScript(mine, plain));
    EXPECT_EQ(OB_SetScriptKey(nullptr, 0), 1);   // back to the built-in key
    ASSERT_TRUE(ob::DecryptScript(sealed, plain));
    EXPECT_EQ(plain, "secret");
}

TEST(SourceDirectives, RecognisedOnlyAsWholeStatementLines) {
    struct Case {
        const char16_t* line;
        SourceDirective kind;
        const char16_t* operand;
    };
    const Case cases[] = {
        {u"include \"a.bas\"", SourceDirective::Include, u"a.bas"},
        {u"  \tLIBRARY \"dir/l.bas\"   # comment", SourceDirective::Library, u"dir/l.bas"},
        {u"Encrypt \"out.obe\"", SourceDirective::Encrypt, u"out.obe"},
        {u"include", SourceDirective::Malformed, u""},
        {u"include a.bas", SourceDirective::Malformed, u""},
        {u"include \"\"", SourceDirective::Malformed, u""},
        {u"include \"a.bas", SourceDirective::Malformed, u""},
        {u"include \"a.bas\" extra", SourceDirective::Malformed, u""},
        {u"includes = 1", SourceDirective::None, u""},
        {u"# include \"a.bas\"", SourceDirective::None, u""},
        {u"print \"include\"", SourceDirective::None, u""},
    };
    for (const Case& c : cases) {
        ob::DirectiveLine parsed = ob::ParseDirective(c.line);
        EXPECT_EQ(parsed.kind, c.kind) << CString(c.line).ToUtf8();
        EXPECT_EQ(parsed.operand, CString(c.operand)) << CString(c.line).ToUtf8();
    }
}

// An interpreter whose errors and statements are recorded as file:line.
class SourcesTest : public ob::test::InterpreterTest {
protected:
    void SetUp() override {
        InterpreterTest::SetUp();
        B().SetErrorHandler([this](const ob::ErrorRecord& r) {
            m_errors.push_back(Where(r.script, r.line) + " " + std::to_string(r.id));
            m_records.push_back(r);
            return OB_CONTINUE;
        });
    }
    std::string Where(const CString& file, int line) const {
        std::string path = file.ToUtf8();
        std::string dir = m_dir.Dir().string() + "/";
        if (path.rfind(dir, 0) == 0) path = path.substr(dir.size());
        return path + ":" + std::to_string(line);
    }
    void TraceStatements() {
        B().SetLineHook([this](const CString& file, int line, unsigned) {
            m_trace.push_back(Where(file, line));
            return OB_CONTINUE;
        });
    }
    std::string Write(const std::string& name, const std::string& text) {
        fs::create_directories((m_dir.Dir() / name).parent_path());
        std::ofstream(m_dir.Dir() / name, std::ios::binary) << text;
        return m_dir.Path(name);
    }
    bool Run(const std::string& name) { return B().ExecuteProgram(m_dir.WPath(name)); }
    std::vector<std::string> Printed() const {
        std::vector<std::string> lines;
        for (const auto& box : m_desktop.Boxes())
            if (box.style == ob::ui::MB_OK) lines.push_back(box.text.ToUtf8());
        return lines;
    }

    ob::test::TempDir m_dir;
    std::vector<std::string> m_errors, m_trace;
    std::vector<ob::ErrorRecord> m_records;
};

TEST_F(SourcesTest, HookAndErrorsNameTheIncludedFileAndItsLine) {
    Write("main.bas", "x = 1\ninclude \"sub/inc.bas\"\ngoto nowhere\n");
    Write("sub/inc.bas", "a = 2\ninclude \"deeper.bas\"\ngoto nothing_here\n");
    Write("sub/deeper.bas", "c = 3");   // no final line end
    TraceStatements();
    ASSERT_TRUE(Run("main.bas"));
    EXPECT_EQ(m_trace, (std::vector<std::string>{"main.bas:1", "sub/inc.bas:1", "sub/deeper.bas:1",
                                                 "sub/inc.bas:3", "main.bas:3"}));
    EXPECT_EQ(m_errors, (std::vector<std::string>{"sub/inc.bas:3 7", "main.bas:3 7"}));
    EXPECT_EQ(m_records[0].sourceLine.ToUtf8(), "goto nothing_here");
    EXPECT_EQ(m_records[0].column, 1);
}

// Windows and old Mac line ends in included files count as the interpreter counts them.
TEST_F(SourcesTest, LineEndsOfEveryKindKeepTheNumbering) {
    Write("main.bas", "include \"crlf.bas\"\r\ninclude \"cr.bas\"\r\ngoto bad_main\r\n");
    Write("crlf.bas", "a = 1\r\ngoto bad_crlf\r\n");
    Write("cr.bas", "\nc = 1\rgoto bad_cr\r");
    ASSERT_TRUE(Run("main.bas"));
    EXPECT_EQ(m_errors, (std::vector<std::string>{"crlf.bas:2 7", "cr.bas:3 7", "main.bas:3 7"}));
}

TEST_F(SourcesTest, CallChainNamesTheFilesOfTheCalls) {
    Write("main.bas", "library \"lib.bas\"\ncall outer()\n");
    Write("lib.bas", "sub outer()\ncall inner()\nendsub\nsub inner()\ngoto missing\nendsub\n");
    ASSERT_TRUE(Run("main.bas"));
    ASSERT_EQ(m_errors, (std::vector<std::string>{"lib.bas:5 7"}));
    const auto& calls = m_records[0].calls;
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(Where(calls[0].script, calls[0].line), "main.bas:2");
    EXPECT_EQ(Where(calls[1].script, calls[1].line), "lib.bas:2");
}

TEST_F(SourcesTest, LoadErrorsStopBeforeAnythingRuns) {
    struct Case {
        const char* main;
        const char* expected;
    };
    Write("self.bas", "print \"x\"\ninclude \"self.bas\"\n");
    Write("bad_lib.bas", "print \"x\"\nlibrary \"none.bas\"\n");
    Write("syntax.bas", "print \"x\"\n  encrypt out.obe\n");
    Write("sealed_bad.bas", std::string("\x89OBX\r\n\x1A\n\x01", 9) + std::string(48, 'z'));
    const Case cases[] = {
        {"self.bas", "self.bas:2 111"},
        {"bad_lib.bas", "bad_lib.bas:2 47"},
        {"syntax.bas", "syntax.bas:2 1"},
        {"sealed_bad.bas", "sealed_bad.bas:0 112"},
    };
    for (const Case& c : cases) {
        m_errors.clear();
        EXPECT_FALSE(Run(c.main)) << c.main;
        EXPECT_EQ(m_errors, std::vector<std::string>{c.expected});
    }
    EXPECT_TRUE(Printed().empty());
}

TEST_F(SourcesTest, IncludesNestOnlyToABoundedDepth) {
    for (int i = 0; i < 70; ++i) Write("n" + std::to_string(i) + ".bas", "include \"n" + std::to_string(i + 1) + ".bas\"\n");
    Write("n70.bas", "print \"deep\"\n");
    EXPECT_FALSE(Run("n0.bas"));
    ASSERT_EQ(m_records.size(), 1u);
    EXPECT_EQ(m_records[0].id, OB_ERR_INCLUDE_CYCLE);
}

TEST_F(SourcesTest, EncryptedIncludedFileIsOpenedToo) {
    std::string sealed;
    ASSERT_TRUE(ob::EncryptScript("q = 5\r\n", sealed));
    Write("part.obe", sealed);
    Write("main.bas", "include \"part.obe\"\nprint q\n");
    ASSERT_TRUE(Run("main.bas"));
    EXPECT_EQ(Printed(), std::vector<std::string>{"5.000000\n"});
}

// Without file access, only the script's folder and what is below it can be
// read, whatever the path says or a link points at.
TEST_F(SourcesTest, SandboxKeepsIncludesInsideTheScriptsFolder) {
    Write("app/main.bas", "include \"sub/ok.bas\"\nprint ok\n");
    Write("app/sub/ok.bas", "ok = 1\n");
    Write("app/up.bas", "include \"../outside.bas\"\n");
    Write("app/linked.bas", "library \"link.bas\"\n");
    Write("outside.bas", "print \"outside\"\n");
    fs::create_symlink(m_dir.Dir() / "outside.bas", m_dir.Dir() / "app/link.bas");
    B().SetCapabilities(OB_CAP_NONE);
    EXPECT_TRUE(Run("app/main.bas"));
    EXPECT_FALSE(Run("app/up.bas"));
    EXPECT_FALSE(Run("app/linked.bas"));
    EXPECT_EQ(m_errors, (std::vector<std::string>{"app/up.bas:1 47", "app/linked.bas:1 47"}));
    B().SetCapabilities(OB_CAP_ALL);
    EXPECT_TRUE(Run("app/up.bas"));
    EXPECT_EQ(Printed(), (std::vector<std::string>{"1.000000\n", "outside\n"}));
}

TEST_F(SourcesTest, EncryptWritesNothingWithoutFileAccessButTheScriptRuns) {
    Write("main.bas", "encrypt \"copy.obe\"\nprint \"ran\"\n");
    B().SetCapabilities(OB_CAP_NONE);
    ASSERT_TRUE(Run("main.bas"));
    EXPECT_EQ(m_errors, std::vector<std::string>{"main.bas:1 40"});
    EXPECT_EQ(Printed(), std::vector<std::string>{"ran\n"});
    EXPECT_FALSE(fs::exists("copy.obe"));
}

}  // namespace
