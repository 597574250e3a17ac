// The variable store: one map per interpreter from decorated name to
// variable. Locals are lower-cased and suffixed "__#" plus the scope level;
// globals keep their spelling, so a global is found only with the letter
// case of its declaration while locals are case-insensitive.
#include <orvobasic/COrvoBasic.h>

#include "platform/CharClass.h"
#include "platform/NumberFormat.h"

#include <cmath>
#include <memory>

using namespace ob;

using ob::platform::TruncateToInt32;

// "__#" plus the level, made once per level.
const CString& COrvoBasic::LevelSuffix(unsigned level) {
    while (m_levelSuffixes.size() <= level) {
        CString suffix = u"__#";
        suffix += platform::FormatInt(static_cast<int64_t>(m_levelSuffixes.size()));
        m_levelSuffixes.push_back(std::move(suffix));
    }
    return m_levelSuffixes[level];
}

void COrvoBasic::AddScopeLevelExtension(CString& name) {
    name.MakeLower();
    name += LevelSuffix(m_scopeLevel);
}

// The binding of a store key, made (unbound) on first use.
COrvoBasic::Binding& COrvoBasic::BindingFor(const CString& key) {
    auto [it, inserted] = m_bindings.try_emplace(key);
    if (inserted) it->second.key = &it->first;
    return it->second;
}

// The binding of the symbol's local at the current scope level, looked up
// the first time that level asks for it.
COrvoBasic::Binding& COrvoBasic::NewLocalBinding(Symbol& symbol) {
    unsigned level = m_scopeLevel;
    if (symbol.byLevel.size() <= level) symbol.byLevel.resize(level + 1, nullptr);
    Binding*& binding = symbol.byLevel[level];
    if (!binding) {
        CString& key = m_scratchName;
        key.assign(*symbol.lower);
        key += LevelSuffix(level);
        binding = &BindingFor(key);
    }
    return *binding;
}

// A variable left the store: its binding names nothing any more.
void COrvoBasic::Unbind(const CString& key) {
    auto it = m_bindings.find(key);
    if (it != m_bindings.end()) Forget(it->second);
}

// The binding's store entry is gone: nothing is bound or dormant there.
void COrvoBasic::Forget(Binding& binding) {
    binding.variable = nullptr;
    binding.slot = nullptr;
    if (binding.spare) {
        binding.spare.reset();
        --m_dormant;
    }
}

// VariableUndefine of a function's own name, whose definition is at
// `position`: the binding tells whether there is anything to remove.
bool COrvoBasic::UndefineLocal(uint32_t position, const CString& lowerName) {
    PositionFacts& facts = FactsAt(position);
    if (!facts.result) {
        CString lower = lowerName;
        lower.MakeLower();
        auto [it, inserted] = m_symbols.try_emplace(std::move(lower));
        if (inserted) it->second.lower = &it->first;
        facts.result = &it->second;
    }
    Binding& binding = LocalBinding(*facts.result);
    if (!binding.variable) return false;
    // Removed as erasing would remove it: the value and its charge go now.
    binding.spare = std::move(*binding.slot);
    CBasicVariable* variable = binding.spare.get();
    std::destroy_at(variable);
    std::construct_at(variable);
    binding.variable = nullptr;
    ++m_dormant;
    return true;
}

// FindVariable for a name read at a fixed text position: the global of that
// spelling when there is one, else the local of the current level. The two
// bindings are found once per position (and level), then only read.
// `key`, when given, receives the name the variable is stored under.
CBasicVariable* COrvoBasic::FindVariableAt(uint32_t position, const CString& name, const CString** key) {
    PositionFacts& facts = FactsAt(position);
    if (!facts.global) {
        facts.global = &BindingFor(name);
        CString lower = name;
        lower.MakeLower();
        auto [it, inserted] = m_symbols.try_emplace(std::move(lower));
        if (inserted) it->second.lower = &it->first;
        facts.local = &it->second;
    }
    const Binding* binding = facts.global->variable ? facts.global : &LocalBinding(*facts.local);
    if (key) *key = binding->variable ? binding->key : nullptr;
    return binding->variable;
}

CBasicVariable* COrvoBasic::FindVariable(CString& name) {
    auto it = m_variables.find(name);
    if (it != m_variables.end() && it->second) return it->second.get();
    CString& local = m_scratchName;
    local.assign(name);
    AddScopeLevelExtension(local);
    it = m_variables.find(local);
    if (it == m_variables.end() || !it->second) return nullptr;
    name = local;
    return it->second.get();
}

CString COrvoBasic::GetVariableName(const CString& name) {
    if (IsStored(name)) return name;
    CString decorated = name;
    AddScopeLevelExtension(decorated);
    return decorated;
}

bool COrvoBasic::SetVariable(const CString& name, const CBasicVariable& value, int index) {
    SetVariableDirect(name, value, index, false);
    return true;
}

bool COrvoBasic::SetVariable(const CString& name, double value, int index) {
    return SetVariable(name, CBasicVariable(value), index);
}

bool COrvoBasic::SetVariable(const CString& name, const CString& value, int index) {
    return SetVariable(name, CBasicVariable(value), index);
}

// Writes element `index` of an existing variable, or creates the variable
// when the index is 0; element writes to an unknown name are an error.
bool COrvoBasic::SetVariableDirect(const CString& name, const CBasicVariable& value, int index, bool global) {
    CString key = name;
    if (CBasicVariable* var = FindVariable(key)) {
        if (index < 0 || index >= var->GetNumItems()) {
            ReportError(36);
            return false;
        }
        var->SetCurIndex(index);
        var->SetValue(value);
        return true;
    }
    if (index >= 1) {
        ReportError(35);
        return false;
    }
    if (!global) AddScopeLevelExtension(key);
    AdoptVariable(key, std::make_unique<CBasicVariable>(value));
    return true;
}

// SetVariableDirect for a local name that FindVariableAt has just found
// neither as a global nor at this level.
void COrvoBasic::CreateVariableAt(const CString& name, const CBasicVariable& value, int index) {
    if (index >= 1) {
        ReportError(35);
        return;
    }
    CString key = name;
    AddScopeLevelExtension(key);
    Binding& binding = BindingFor(key);
    if (binding.spare) ReviveVariable(key, value, binding);
    else AdoptVariable(key, std::make_unique<CBasicVariable>(value), binding);
    binding.createdBytes = EntryBytes(key);
}

bool COrvoBasic::CopyVariable(const CString& name, const CBasicVariable& value, bool global) {
    CString key = name;
    if (CBasicVariable* var = FindVariable(key)) {
        var->Set(value);
        return true;
    }
    if (!global) AddScopeLevelExtension(key);
    AdoptVariable(key, std::make_unique<CBasicVariable>(value));
    return true;
}

bool COrvoBasic::SetVariableSize(const CString& name, int size, bool global) {
    CString key = name;
    if (CBasicVariable* var = FindVariable(key)) {
        if (size > 0) var->Redim(size);
        return true;
    }
    if (!global) AddScopeLevelExtension(key);
    auto var = std::make_unique<CBasicVariable>();
    if (size > 1) var->SetArraySize(size);
    AdoptVariable(key, std::move(var));
    return true;
}

// Always the local of the current level: a global cannot be undefined.
bool COrvoBasic::VariableUndefine(const CString& name) {
    CString key = name;
    AddScopeLevelExtension(key);
    if (!IsStored(key)) return false;
    m_variables.erase(key);
    Unbind(key);
    return true;
}

int COrvoBasic::GetVariableSize(const CString& name) {
    CString key = name;
    CBasicVariable* var = FindVariable(key);
    if (!var) return 0;
    if (var->GetNumItems() == 1 && !var->GetItem(0).IsSet()) return 0;
    return var->GetNumItems();
}

// Reads a variable name (and subscript) straight from the source.
bool COrvoBasic::GetVariable(CString& name) {
    if (!platform::IsAlpha(CurChar())) return false;
    name.clear();
    while (m_pos < m_endIndex && !IsDelimiterChar(CurChar())) name += m_text[m_pos++];
    m_pendingIndex = 0;
    if (CurChar() == u'[') {
        NextChar();
        GetIndex(m_pendingIndex);
    }
    return true;
}

// Reads "expression ]" into `index`, truncated toward zero.
bool COrvoBasic::GetIndex(int& index) {
    CBasicVariable value;
    get_exp(value);
    if (!value.IsSet()) {
        ReportError(1);
        return false;
    }
    get_token();
    if (m_tokenType != DELIMITER || m_token.empty() || m_token[0] != u']') {
        ReportError(1);
        return false;
    }
    index = TruncateToInt32(value.GetNumberValue());
    return true;
}

bool COrvoBasic::VariablesFree() {
    for (auto& entry : m_bindings) Forget(entry.second);
    m_variables.clear();
    return true;
}

int COrvoBasic::KeywordToType(KEYWORD_TYPE keyword) {
    switch (keyword) {
    case KW_CHAR: return 1;
    case KW_INTEGER: return 3;
    case KW_FLOAT: return 4;
    case KW_DOUBLE: return 5;
    case KW_STRING: return 6;
    default: return 0;
    }
}

// One declaration of "dim"/"global": name, optional [size], optional "as" type.
bool COrvoBasic::DimOne(bool global) {
    if (get_token() != VARIABLE || m_token.empty()) {
        ReportError(1);
        return false;
    }
    CString name = m_token;
    int size = 1;
    get_token();
    if (m_tokenType == DELIMITER && m_token == u"[") {
        if (!GetIndex(size)) return false;
        if (size < 1 || size > CBasicVariable::kMaxItems) {
            ReportError(32);
            return false;
        }
        get_token();
    }
    if (m_tokenType == KEYWORD && m_keyword == KW_AS) {
        get_token();
        if (m_tokenType != KEYWORD) {
            if (!DimStructVariable(name, m_token, global)) return false;
        } else if (KeywordToType(m_keyword) == 0) {
            ReportError(1);
            return false;
        } else if (size == 1) {
            SetVariableDirect(name, CBasicVariable(), 0, global);
        } else {
            SetVariableSize(name, size, global);
        }
        get_token();
        if (m_tokenType == DELIMITER && m_command != CMD_EOL && m_command != CMD_FINISHED && m_token != u",") {
            ReportError(1);
            return false;
        }
        return true;
    }
    if (m_tokenType != DELIMITER) {
        ReportError(1);
        return false;
    }
    SetVariableSize(name, size, global);
    return true;
}

bool COrvoBasic::ExecDim(bool global) {
    for (;;) {
        if (m_command == CMD_EOL || m_command == CMD_FINISHED) return true;
        if (!DimOne(global)) return false;
    }
}

bool COrvoBasic::ExecGarbageCollection(CBasicVariable& result, CArgArray&, FUNCTION_TYPE) {
    CString suffix = LevelSuffix(m_scopeLevel + 1);
    int removed = 0;
    for (auto it = m_variables.begin(); it != m_variables.end();) {
        const CString& key = it->first;
        if (key.size() > suffix.size() && key.compare(key.size() - suffix.size(), suffix.size(), suffix) == 0) {
            if (it->second) ++removed;
            Unbind(key);
            it = m_variables.erase(it);
        } else {
            ++it;
        }
    }
    result.SetValue(removed);
    return true;
}

bool COrvoBasic::ExecGetVarStats(CBasicVariable& result, CArgArray&, FUNCTION_TYPE) {
    result.AddItem(static_cast<int>(VariableCount()));
    result.AddItem(static_cast<int>(m_argBuffers));
    return true;
}
