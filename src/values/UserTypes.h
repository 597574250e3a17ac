// Record types declared with "type" ... "endtype" and the record variables made from them.
#pragma once

#include <orvobasic/COrvoBasic.h>

#include "values/CTypeStructure.h"

#include <memory>
#include <unordered_map>

namespace ob {

// The interpreter's two owning tables of records: type descriptions by type
// name (case-sensitive, as written) and record variables by the key they are
// stored under (the scope-decorated name, or the plain name for "global").
class CUserTypes {
public:
    // Enters a type description; a type of the same name is replaced (records
    // already made from it keep their own copy of the layout).
    void AddType(const CString& name, std::unique_ptr<CTypeStructure> type);
    // The type named exactly `name`, or null.
    const CTypeStructure* LookupType(const CString& name) const;

    // Makes a record of the type's layout under `key`, replacing a record of
    // that key; returns it.
    CTypeStructure& AddRecord(const CString& key, const CTypeStructure& type);
    // The record stored under `key`, or null.
    CTypeStructure* FindRecord(const CString& key);

    size_t TypeCount() const { return m_types.size(); }
    size_t RecordCount() const { return m_records.size(); }
    // Deletes every type description and every record.
    void Clear();

private:
    std::unordered_map<CString, std::unique_ptr<CTypeStructure>, CStringHash> m_types;
    std::unordered_map<CString, std::unique_ptr<CTypeStructure>, CStringHash> m_records;
};

}  // namespace ob
