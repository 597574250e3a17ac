// Named maps: dictionaries from string keys to whole variables.
#pragma once

#include <orvobasic/COrvoBasic.h>

#include <memory>
#include <unordered_map>

namespace ob {

// The interpreter's maps, by name. Map names and keys are compared exactly
// (case-sensitive); maps are global to the interpreter, not scoped. Each
// stored value is a whole copy (all elements) of the variable given. Keys
// and values enumerate in hash order, not insertion order.
class CMapDirectory {
public:
    using Map = std::unordered_map<CString, CBasicVariable, CStringHash>;

    // Entries stored from now on are counted on `meter` (none when null).
    explicit CMapDirectory(MemoryMeter* meter = nullptr) : m_meter(meter) {}

    // Makes an empty map under `name`; an existing map of that name is
    // replaced by the empty one and its contents are freed.
    void Add(const CString& name);
    // The map of that name, or null.
    Map* Lookup(const CString& name);
    const Map* Lookup(const CString& name) const;
    // Empties a map, which stays usable; false when there is no such map.
    bool Clear(const CString& name);
    // Stores a whole copy of `value` under `key`, replacing what the key held;
    // false (nothing stored) when there is no such map.
    bool Store(const CString& name, const CString& key, const CBasicVariable& value);
    // Sets `out` to a whole copy of the stored variable; false, `out`
    // untouched, when the map or key does not exist.
    bool Get(const CString& name, const CString& key, CBasicVariable& out) const;
    bool Has(const CString& name, const CString& key) const;
    // Deletes the key and its variable; true when a key was removed.
    bool Remove(const CString& name, const CString& key);
    // Appends every key to `out` with AddItem; false when there is no such map.
    bool GetKeys(const CString& name, CBasicVariable& out) const;
    // Appends, of every stored variable, the element at `out`'s current index
    // (AddItem of a variable); false when there is no such map.
    bool GetValues(const CString& name, CBasicVariable& out) const;

    size_t Count() const { return m_maps.size(); }
    // Bytes the map's entries hold (keys and values), as counted on the
    // meter; 0 when there is no such map or no meter.
    uint64_t Bytes(const CString& name) const;
    // Deletes every map and everything stored in them.
    void FreeAll() { m_maps.clear(); }

private:
    std::unordered_map<CString, std::unique_ptr<Map>, CStringHash> m_maps;
    MemoryMeter* m_meter = nullptr;
};

}  // namespace ob
