// The tokenizer and the vocabulary tables: how program text is cut into
// tokens and classified, and how the cursor moves.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace ob;

// One token as get_token left it.
struct Tok {
    BASIC_TOKEN_TYPE type;
    std::u16string text;
    COMMAND_TYPE command = CMD_NONE;
    bool operator==(const Tok& o) const { return type == o.type && text == o.text && command == o.command; }
};

std::ostream& operator<<(std::ostream& os, const Tok& t) {
    return os << "{type " << t.type << ", \"" << CString(t.text).ToUtf8() << "\", cmd " << t.command << "}";
}

// An interpreter holding a program text, with error boxes collected.
class TokenizerTest : public ::testing::Test {
protected:
    void SetUp() override { ui::SetDesktop(&m_desktop); }
    void TearDown() override { ui::SetDesktop(nullptr); }

    // Loads the text into a fresh interpreter.
    COrvoBasic& Load(const std::u16string& text) {
        m_basic = std::make_unique<COrvoBasic>();
        m_basic->SetProgramText(CString(text));
        return *m_basic;
    }

    // All tokens up to the end of the program (the end marker excluded; the
    // line end that loading appends is the end, not a token). A character no
    // token begins with is recorded once and stepped over.
    std::vector<Tok> Tokens(const std::u16string& text) {
        COrvoBasic& b = Load(text);
        std::vector<Tok> out;
        for (int guard = 0; guard < 1000000; ++guard) {
            BASIC_TOKEN_TYPE type = b.get_token();
            if (b.Command() == CMD_FINISHED) break;
            out.push_back({type, b.Token(), b.Command()});
            if (type == TOKEN_NONE) b.NextChar();
        }
        return out;
    }

    int ErrorCount() const {
        int n = 0;
        for (const auto& box : m_desktop.Boxes())
            if (box.style == (ui::MB_OKCANCEL | ui::MB_ICONSTOP)) ++n;
        return n;
    }

    ui::HeadlessDesktop m_desktop;
    std::unique_ptr<COrvoBasic> m_basic;
};

const Tok kEol{DELIMITER, u"\n", CMD_EOL};

TEST_F(TokenizerTest, AssignmentWithCommentEndsAtTheComment) {
    EXPECT_EQ(Tokens(u"x = 1 # note\n"),
              (std::vector<Tok>{{VARIABLE, u"x"}, {DELIMITER, u"="}, {NUMBER, u"1"}, {COMMENT, u""}, kEol}));
}

// A blank line is swallowed by the line end before it; two blank lines leave one.
TEST_F(TokenizerTest, EmptyLinesCollapseIntoLineEnds) {
    EXPECT_EQ(Tokens(u"a\n\nb"), (std::vector<Tok>{{VARIABLE, u"a"}, kEol, {VARIABLE, u"b"}}));
    EXPECT_EQ(Tokens(u"a\n\n\nb"), (std::vector<Tok>{{VARIABLE, u"a"}, kEol, kEol, {VARIABLE, u"b"}}));
    EXPECT_EQ(Tokens(u"a\r\nb"), (std::vector<Tok>{{VARIABLE, u"a"}, kEol, {VARIABLE, u"b"}}));
    EXPECT_EQ(Tokens(u"a\rb"), (std::vector<Tok>{{VARIABLE, u"a"}, kEol, {VARIABLE, u"b"}}));
}

TEST_F(TokenizerTest, StatementWordsInAnyCase) {
    for (const char16_t* word : {u"print", u"Print", u"PRINT"}) {
        std::vector<Tok> t = Tokens(word);
        ASSERT_FALSE(t.empty());
        EXPECT_EQ(t[0].type, COMMAND);
        EXPECT_EQ(t[0].command, CMD_PRINT);
    }
    // a statement word wins over a function call
    std::vector<Tok> t = Tokens(u"print(1)");
    EXPECT_EQ(t[0].type, COMMAND);
    EXPECT_EQ(t[0].command, CMD_PRINT);
}

TEST_F(TokenizerTest, LabelNeedsTheColonRightAfterTheName) {
    EXPECT_EQ(Tokens(u"abc:"), (std::vector<Tok>{{LABEL, u"abc"}}));
    EXPECT_EQ(Tokens(u"abc :"), (std::vector<Tok>{{VARIABLE, u"abc"}, {DELIMITER, u":"}}));
}

// "+" and "-" are delimiters, so a signed exponent is cut at the sign.
TEST_F(TokenizerTest, NumberEndsAtTheNextDelimiter) {
    EXPECT_EQ(Tokens(u"1e-5"), (std::vector<Tok>{{NUMBER, u"1e"}, {DELIMITER, u"-"}, {NUMBER, u"5"}}));
    EXPECT_EQ(Tokens(u"2.5e3x"), (std::vector<Tok>{{NUMBER, u"2.5e3x"}}));
}

TEST_F(TokenizerTest, IdentifierKinds) {
    COrvoBasic& b = Load(u"while len(x) f (x) a.b name_2.z");
    EXPECT_EQ(b.get_token(), KEYWORD);
    EXPECT_EQ(b.Keyword(), KW_WHILE);
    EXPECT_EQ(b.get_token(), FUNCTION);
    EXPECT_EQ(b.Token(), u"len");
    EXPECT_EQ(b.CurrentFunction(), FT_LEN);
    b.get_token();   // (
    b.get_token();   // x
    b.get_token();   // )
    // a blank between name and parenthesis makes it no call
    EXPECT_EQ(b.get_token(), VARIABLE);
    b.get_token();
    b.get_token();
    b.get_token();
    EXPECT_EQ(b.get_token(), UNKNOWN_MEMBER);
    EXPECT_EQ(b.Token(), u"a.b");
    EXPECT_EQ(b.MemberName(), u"b");
    EXPECT_EQ(b.get_token(), UNKNOWN_MEMBER);
    EXPECT_EQ(b.Token(), u"name_2.z");
}

// A secondary keyword written with a parenthesis is a function call, never a keyword.
TEST_F(TokenizerTest, KeywordFollowedByParenthesisIsAFunction) {
    COrvoBasic& b = Load(u"text(1)");
    EXPECT_EQ(b.get_token(), FUNCTION);
}

TEST_F(TokenizerTest, EveryDelimiterIsOneToken) {
    const std::u16string delimiters = u";,+-<>/*%^=()[]~:!'@&{}|?$";
    std::vector<Tok> t = Tokens(delimiters);
    ASSERT_EQ(t.size(), delimiters.size());
    for (size_t i = 0; i < delimiters.size(); ++i) EXPECT_EQ(t[i], (Tok{DELIMITER, std::u16string(1, delimiters[i])}));
    // two-character operators are read as two tokens
    EXPECT_EQ(Tokens(u"=>"), (std::vector<Tok>{{DELIMITER, u"="}, {DELIMITER, u">"}}));
}

// Blanks, then control characters, are skipped once each, in that order: a
// blank after a control character is a delimiter token of its own.
TEST_F(TokenizerTest, BlanksAndControlCharactersAreSkipped) {
    EXPECT_EQ(Tokens(u"\t \x01\x02x"), (std::vector<Tok>{{VARIABLE, u"x"}}));
    EXPECT_EQ(Tokens(u"\x01 x"), (std::vector<Tok>{{DELIMITER, u" "}, {VARIABLE, u"x"}}));
}

TEST_F(TokenizerTest, CharacterThatBeginsNoTokenLeavesTheCursor) {
    COrvoBasic& b = Load(u"_x");
    EXPECT_EQ(b.get_token(), TOKEN_NONE);
    EXPECT_EQ(b.GetPosition(), 0u);
    EXPECT_EQ(b.get_token(), TOKEN_NONE);
    EXPECT_EQ(b.GetPosition(), 0u);
}

TEST_F(TokenizerTest, StringLiterals) {
    EXPECT_EQ(Tokens(u"\"a b, c!\""), (std::vector<Tok>{{QUOTE, u"a b, c!"}}));
    EXPECT_EQ(Tokens(u"\"\""), (std::vector<Tok>{{QUOTE, u""}}));
    EXPECT_EQ(Tokens(u"\"a#b\""), (std::vector<Tok>{{QUOTE, u"a#b"}}));
    EXPECT_EQ(Tokens(u"\"\u00e9\u20ac\""), (std::vector<Tok>{{QUOTE, u"\u00e9\u20ac"}}));
    EXPECT_EQ(ErrorCount(), 0);
}

// A character outside letters, digits, punctuation and white space ends the
// literal and is skipped as if it were the closing quote.
TEST_F(TokenizerTest, StringLiteralStopsAtAForeignCharacter) {
    EXPECT_EQ(Tokens(u"\"ab\x01x"), (std::vector<Tok>{{QUOTE, u"ab"}, {VARIABLE, u"x"}}));
    EXPECT_EQ(Tokens(u"\"ab\u0081x"), (std::vector<Tok>{{QUOTE, u"ab"}, {VARIABLE, u"x"}}));
}

// Line ends are white space: an open literal runs on to the next quote, or
// to the end of the program, where it is a syntax error.
TEST_F(TokenizerTest, OpenStringLiteral) {
    EXPECT_EQ(Tokens(u"\"a\nb\" c"), (std::vector<Tok>{{QUOTE, u"a\nb"}, {VARIABLE, u"c"}}));
    EXPECT_EQ(ErrorCount(), 0);
    EXPECT_EQ(Tokens(u"\"open\nx"), (std::vector<Tok>{{QUOTE, u"open\nx"}}));
    EXPECT_EQ(ErrorCount(), 1);
}

TEST_F(TokenizerTest, EndOfProgramRepeats) {
    COrvoBasic& b = Load(u"x");
    b.get_token();
    b.get_token();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(b.get_token(), DELIMITER);
        EXPECT_EQ(b.Command(), CMD_FINISHED);
        EXPECT_TRUE(b.Token().empty());
        EXPECT_TRUE(b.IsEndOfProgram());
    }
}

TEST_F(TokenizerTest, PutbackStepsOverTheTokenAndItsQuotes) {
    COrvoBasic& b = Load(u"print \"ab\" x");
    b.get_token();
    b.get_token();
    EXPECT_EQ(b.GetPosition(), 10u);
    b.putback();
    EXPECT_EQ(b.GetPosition(), 6u);
    EXPECT_EQ(b.get_token(), QUOTE);
    EXPECT_EQ(b.Token(), u"ab");
}

TEST_F(TokenizerTest, PutbackOfALongerTokenGoesToTheStart) {
    COrvoBasic& b = Load(u"a \"xyz\"");
    b.get_token();
    b.get_token();
    b.Rewind(3);   // inside the literal: stepping back 5 would pass the start
    b.putback();
    EXPECT_EQ(b.GetPosition(), 0u);
}

TEST_F(TokenizerTest, FindEolAndGoPastEol) {
    COrvoBasic& b = Load(u"a b c\n\n\n  d e");
    b.get_token();
    b.FindEOL();
    EXPECT_EQ(b.CurChar(), u'\n');
    b.GoPastEOL();
    EXPECT_EQ(b.Token(), u"d");
}

TEST_F(TokenizerTest, RewindRefusesPositionsAtOrPastTheEnd) {
    COrvoBasic& b = Load(u"abc");   // text "abc\n", end index 3
    EXPECT_TRUE(b.Rewind(2));
    EXPECT_EQ(b.GetPosition(), 2u);
    EXPECT_FALSE(b.Rewind(3));
    EXPECT_FALSE(b.Rewind(1000));
    EXPECT_EQ(b.GetPosition(), 2u);
}

TEST_F(TokenizerTest, VocabularyLookups) {
    COrvoBasic& b = Load(u"");
    for (const char16_t* w : {u"STOP", u"Stop", u"stop", u"end", u"END"}) EXPECT_EQ(b.LookupCommand(w), CMD_END);
    EXPECT_EQ(b.LookupCommand(u"gosub"), CMD_NONE);
    EXPECT_EQ(b.LookupCommand(u"while"), CMD_NONE);
    EXPECT_EQ(b.LookupCommand(u"EndIf"), CMD_ENDIF);
    EXPECT_EQ(b.LookupKeyword(u"gosub"), KW_NONE);
    EXPECT_EQ(b.LookupKeyword(u""), KW_NONE);
    EXPECT_EQ(b.LookupKeyword(u"WHILE"), KW_WHILE);
    EXPECT_EQ(b.LookupKeyword(u"print"), KW_NONE);
}

// Every statement word and every secondary keyword with its number.
TEST_F(TokenizerTest, VocabularyIsComplete) {
    COrvoBasic& b = Load(u"");
    const std::pair<const char16_t*, int> commands[] = {
        {u"print", 1}, {u"if", 2}, {u"do", 3}, {u"loop", 4}, {u"then", 5}, {u"for", 6}, {u"next", 7},
        {u"to", 8}, {u"goto", 9}, {u"return", 13}, {u"end", 14}, {u"stop", 14}, {u"else", 15},
        {u"endif", 16}, {u"dim", 17}, {u"function", 18}, {u"endfunction", 19}, {u"sub", 20},
        {u"endsub", 21}, {u"declare", 22}, {u"dialog", 23}, {u"enddialog", 24}, {u"include", 25},
        {u"library", 26}, {u"rem", 27}, {u"map", 28}, {u"call", 29}, {u"run", 30}, {u"runexe", 31},
        {u"open", 32}, {u"close", 33}, {u"type", 34}, {u"endtype", 35}, {u"event", 36}, {u"throw", 37},
        {u"watch", 38}, {u"closedialog", 39}, {u"alter", 40}, {u"endalter", 41}, {u"global", 42},
        {u"stayresident", 43}, {u"playsound", 44}, {u"timerstart", 45}, {u"timerstop", 46},
        {u"setfocus", 47}, {u"page", 48}, {u"endpage", 49}, {u"propertysheet", 50}, {u"encrypt", 51},
    };
    for (const auto& [word, value] : commands) EXPECT_EQ(b.LookupCommand(word), value) << CString(word).ToUtf8();
    const std::pair<const char16_t*, int> keywords[] = {
        {u"alias", 1}, {u"as", 2}, {u"while", 3}, {u"lib", 4}, {u"byval", 5}, {u"integer", 6},
        {u"double", 7}, {u"float", 8}, {u"char", 9}, {u"string", 10}, {u"unicode", 11}, {u"title", 14},
        {u"calling", 15}, {u"control", 16}, {u"button", 17}, {u"edittext", 18}, {u"checkbox", 19},
        {u"listbox", 20}, {u"okbutton", 21}, {u"statictext", 22}, {u"bitmap", 23}, {u"groupbox", 24},
        {u"multilistbox", 25}, {u"datetime", 26}, {u"editmultiline", 27}, {u"cancelbutton", 28},
        {u"combobox", 29}, {u"editnumber", 30}, {u"radiogroup", 31}, {u"treeview", 32}, {u"font", 33},
        {u"window", 34}, {u"clear", 35}, {u"create", 36}, {u"input", 37}, {u"output", 38},
        {u"append", 39}, {u"remove", 40}, {u"oninit", 41}, {u"onexit", 42}, {u"show", 43},
        {u"enable", 44}, {u"value", 45}, {u"selection", 46}, {u"text", 47}, {u"menuitem", 48},
        {u"position", 49}, {u"sliderhorz", 50}, {u"slidervert", 51}, {u"tabcontrol", 52},
    };
    for (const auto& [word, value] : keywords) EXPECT_EQ(b.LookupKeyword(word), value) << CString(word).ToUtf8();
}

// Every first character of a token, all 65536 of them, is handled in bounded steps.
TEST_F(TokenizerTest, AnyCharacterIsHandled) {
    std::u16string text;
    for (char32_t c = 1; c < 0x10000; ++c) {
        text += static_cast<char16_t>(c);
        text += u' ';
    }
    std::vector<Tok> tokens = Tokens(text);
    EXPECT_FALSE(tokens.empty());
}

}  // namespace
