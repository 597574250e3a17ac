// Angles in the packed sexagesimal form (±DDD.MMSSsss) of the "rad2dms" and
// "dms2rad" built-ins, and the hook through which a host supplies its own
// geometry library's conversions.
#pragma once

#include <orvobasic/export.h>

namespace ob {

// Converter signature: one angle in, one angle out.
using DmsConverter = double (*)(double);

// Installs the host's converters, process-wide; nullptr for either restores
// the built-in one.
OB_API void SetDmsConverters(DmsConverter radToDms, DmsConverter dmsToRad);

}  // namespace ob
