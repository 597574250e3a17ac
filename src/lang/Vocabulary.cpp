// The tables of statement words and secondary keywords. Words are stored in
// lower case and looked up without regard to case.
#include <orvobasic/COrvoBasic.h>

#include "platform/CharClass.h"

using namespace ob;

namespace {

struct CommandWord {
    const char16_t* word;
    COMMAND_TYPE type;
};

// "end" and "stop" are two words for one statement.
constexpr CommandWord kCommands[] = {
    {u"print", CMD_PRINT}, {u"if", CMD_IF}, {u"then", CMD_THEN}, {u"else", CMD_ELSE},
    {u"goto", CMD_GOTO}, {u"for", CMD_FOR}, {u"next", CMD_NEXT}, {u"to", CMD_TO},
    {u"return", CMD_RETURN}, {u"endif", CMD_ENDIF}, {u"end", CMD_END}, {u"stop", CMD_END},
    {u"dim", CMD_DIM}, {u"function", CMD_FUNCTION}, {u"endfunction", CMD_ENDFUNCTION},
    {u"sub", CMD_SUB}, {u"endsub", CMD_ENDSUB}, {u"declare", CMD_DECLARE},
    {u"dialog", CMD_DIALOG}, {u"enddialog", CMD_ENDDIALOG}, {u"endpage", CMD_ENDPAGE},
    {u"page", CMD_PAGE}, {u"propertysheet", CMD_PROPERTYSHEET}, {u"include", CMD_INCLUDE},
    {u"library", CMD_LIBRARY}, {u"rem", CMD_REM}, {u"map", CMD_MAP}, {u"call", CMD_CALL},
    {u"run", CMD_RUN}, {u"runexe", CMD_RUNEXE}, {u"open", CMD_OPEN}, {u"close", CMD_CLOSE},
    {u"type", CMD_TYPE}, {u"endtype", CMD_ENDTYPE}, {u"throw", CMD_THROW},
    {u"event", CMD_EVENT}, {u"watch", CMD_WATCH}, {u"closedialog", CMD_CLOSEDIALOG},
    {u"alter", CMD_ALTER}, {u"endalter", CMD_ENDALTER}, {u"global", CMD_GLOBAL},
    {u"stayresident", CMD_STAYRESIDENT}, {u"playsound", CMD_PLAYSOUND},
    {u"timerstart", CMD_TIMERSTART}, {u"timerstop", CMD_TIMERSTOP}, {u"do", CMD_DO},
    {u"loop", CMD_LOOP}, {u"setfocus", CMD_SETFOCUS}, {u"encrypt", CMD_ENCRYPT},
};

struct KeywordWord {
    const char16_t* word;
    KEYWORD_TYPE type;
};

constexpr KeywordWord kKeywords[] = {
    {u"alias", KW_ALIAS}, {u"as", KW_AS}, {u"while", KW_WHILE}, {u"lib", KW_LIB},
    {u"byval", KW_BYVAL}, {u"integer", KW_INTEGER}, {u"double", KW_DOUBLE},
    {u"float", KW_FLOAT}, {u"char", KW_CHAR}, {u"string", KW_STRING},
    {u"unicode", KW_UNICODE}, {u"title", KW_TITLE}, {u"calling", KW_CALLING},
    {u"control", KW_CONTROL}, {u"button", KW_BUTTON}, {u"edittext", KW_EDITTEXT},
    {u"checkbox", KW_CHECKBOX}, {u"listbox", KW_LISTBOX}, {u"okbutton", KW_OKBUTTON},
    {u"statictext", KW_STATICTEXT}, {u"bitmap", KW_BITMAP}, {u"groupbox", KW_GROUPBOX},
    {u"multilistbox", KW_MULTILISTBOX}, {u"datetime", KW_DATETIME},
    {u"editmultiline", KW_EDITMULTILINE}, {u"cancelbutton", KW_CANCELBUTTON},
    {u"combobox", KW_COMBOBOX}, {u"editnumber", KW_EDITNUMBER},
    {u"radiogroup", KW_RADIOGROUP}, {u"treeview", KW_TREEVIEW}, {u"font", KW_FONT},
    {u"window", KW_WINDOW}, {u"clear", KW_CLEAR}, {u"create", KW_CREATE},
    {u"input", KW_INPUT}, {u"output", KW_OUTPUT}, {u"append", KW_APPEND},
    {u"remove", KW_REMOVE}, {u"oninit", KW_ONINIT}, {u"onexit", KW_ONEXIT},
    {u"show", KW_SHOW}, {u"enable", KW_ENABLE}, {u"value", KW_VALUE},
    {u"selection", KW_SELECTION}, {u"text", KW_TEXT}, {u"menuitem", KW_MENUITEM},
    {u"position", KW_POSITION}, {u"sliderhorz", KW_SLIDERHORZ},
    {u"slidervert", KW_SLIDERVERT}, {u"tabcontrol", KW_TABCONTROL},
};

}  // namespace

bool COrvoBasic::BuildCommandTable() {
    m_commands.clear();
    m_commands.reserve(std::size(kCommands));
    for (const auto& c : kCommands) m_commands.emplace(c.word, c.type);
    return true;
}

bool COrvoBasic::BuildKeywordTable() {
    m_keywords.clear();
    m_keywords.reserve(std::size(kKeywords));
    for (const auto& k : kKeywords) m_keywords.emplace(k.word, k.type);
    return true;
}

namespace {

// Looks `word` up in lower case, through a reused scratch string so that
// lookups allocate nothing; `none` when absent.
template <typename Table, typename Value>
Value LookupLowered(const Table& table, const CString& word, CString& scratch, Value none) {
    scratch.assign(word);
    auto it = table.find(scratch.MakeLower());
    return it == table.end() ? none : it->second;
}

}  // namespace

COMMAND_TYPE COrvoBasic::LookupCommand(const CString& word) const {
    return LookupLowered(m_commands, word, m_lowerScratch, CMD_NONE);
}

KEYWORD_TYPE COrvoBasic::LookupKeyword(const CString& word) const {
    return LookupLowered(m_keywords, word, m_lowerScratch, KW_NONE);
}
