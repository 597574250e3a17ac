// The "map" statement and the map built-ins "mapset", "mapget", "maphas",
// "mapremove", "mapgetkeys", "mapgetvalues".
#include "values/Maps.h"

using namespace ob;

// ---- CMapDirectory ----------------------------------------------------------

void CMapDirectory::Add(const CString& name) {
    auto map = std::make_unique<Map>();
    map->reserve(10);
    m_maps[name] = std::move(map);
}

CMapDirectory::Map* CMapDirectory::Lookup(const CString& name) {
    auto it = m_maps.find(name);
    return it == m_maps.end() ? nullptr : it->second.get();
}

const CMapDirectory::Map* CMapDirectory::Lookup(const CString& name) const {
    auto it = m_maps.find(name);
    return it == m_maps.end() ? nullptr : it->second.get();
}

bool CMapDirectory::Clear(const CString& name) {
    Map* map = Lookup(name);
    if (map) map->clear();
    return map != nullptr;
}

bool CMapDirectory::Store(const CString& name, const CString& key, const CBasicVariable& value) {
    Map* map = Lookup(name);
    if (!map) return false;
    auto it = map->find(key);
    if (it != map->end()) {
        it->second.Set(value);
    } else {
        it = map->emplace(key, value).first;
        if (m_meter) it->second.AttachMeter(m_meter, static_cast<int64_t>((key.capacity() + 1) * 2 + 64));
    }
    return true;
}

uint64_t CMapDirectory::Bytes(const CString& name) const {
    const Map* map = Lookup(name);
    uint64_t total = 0;
    if (map)
        for (const auto& entry : *map) total += static_cast<uint64_t>(entry.second.ChargedBytes());
    return total;
}

bool CMapDirectory::Get(const CString& name, const CString& key, CBasicVariable& out) const {
    const Map* map = Lookup(name);
    if (!map) return false;
    auto it = map->find(key);
    if (it == map->end()) return false;
    out.Set(it->second);
    return true;
}

bool CMapDirectory::Has(const CString& name, const CString& key) const {
    const Map* map = Lookup(name);
    return map && map->count(key) != 0;
}

bool CMapDirectory::Remove(const CString& name, const CString& key) {
    Map* map = Lookup(name);
    return map && map->erase(key) != 0;
}

bool CMapDirectory::GetKeys(const CString& name, CBasicVariable& out) const {
    const Map* map = Lookup(name);
    if (!map) return false;
    for (const auto& entry : *map) out.AddItem(entry.first);
    return true;
}

bool CMapDirectory::GetValues(const CString& name, CBasicVariable& out) const {
    const Map* map = Lookup(name);
    if (!map) return false;
    for (const auto& entry : *map) out.AddItem(entry.second);
    return true;
}

// ---- the "map" statement and the built-ins -----------------------------------

namespace {

// True when the statement has nothing more on its line.
bool AtStatementEnd(COrvoBasic& b) {
    b.get_token();
    bool end = b.Command() == CMD_EOL || b.Command() == CMD_FINISHED || b.TokenType() == COMMENT;
    b.putback();
    return end;
}

// Arguments each map built-in takes, exactly.
struct MapOpArity {
    FUNCTION_TYPE type;
    size_t args;
};
constexpr MapOpArity kMapArity[] = {
    {FT_MAPSET, 3}, {FT_MAPGET, 2}, {FT_MAPHAS, 2}, {FT_MAPREMOVE, 2}, {FT_MAPGETKEYS, 1}, {FT_MAPGETVALUES, 1},
};

}  // namespace

// "map create NAME" makes (or empties by replacing) a map, "map clear NAME"
// empties one. Error 1 when no keyword follows "map" or the name is missing
// or gives nothing; error 29 for any other keyword ("map remove" included).
// After an error the rest of the line is skipped.
bool COrvoBasic::ExecMap() {
    get_token();
    KEYWORD_TYPE keyword = m_tokenType == KEYWORD ? m_keyword : KW_NONE;
    if (keyword == KW_NONE) putback();
    CBasicVariable name;
    if (keyword != KW_NONE && !AtStatementEnd(*this)) get_exp(name);
    int error = keyword == KW_NONE || !name.IsSet() ? 1 : keyword == KW_CREATE || keyword == KW_CLEAR ? 0 : 29;
    if (error) {
        ReportError(error);
        FindEOL();
        return false;
    }
    if (keyword == KW_CREATE)
        m_maps->Add(name.GetStringValue());
    else
        m_maps->Clear(name.GetStringValue());
    return true;
}

// Runs one map built-in after checking its argument count (error 24). A map
// that was never created is no error: "mapset" stores nothing, "mapget"
// gives 0.0, "maphas" and "mapremove" False, the enumerations leave the
// result unset. "mapset" always gives False, even when it stored the value.
bool COrvoBasic::ExecMapOperation(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    const MapOpArity* arity = nullptr;
    for (const auto& a : kMapArity)
        if (a.type == type) arity = &a;
    if (!arity) return false;
    if (args.size() != arity->args) {
        ReportError(24);
        return false;
    }
    CString name = args[0].GetStringValue();
    // The enumerations build an array as large as the map: counted first.
    if ((type == FT_MAPGETKEYS || type == FT_MAPGETVALUES) && !MayAllocate(m_maps->Bytes(name))) return false;
    switch (type) {
    case FT_MAPSET:
        m_maps->Store(name, args[1].GetStringValue(), args[2]);
        result.SetValue(false);
        return true;
    case FT_MAPGET:
        result.SetValue(0.0);
        m_maps->Get(name, args[1].GetStringValue(), result);
        return true;
    case FT_MAPHAS: result.SetValue(m_maps->Has(name, args[1].GetStringValue())); return true;
    case FT_MAPREMOVE: result.SetValue(m_maps->Remove(name, args[1].GetStringValue())); return true;
    case FT_MAPGETKEYS: return m_maps->GetKeys(name, result);
    default: return m_maps->GetValues(name, result);
    }
}

bool COrvoBasic::MapsFree() {
    m_maps->FreeAll();
    return true;
}
