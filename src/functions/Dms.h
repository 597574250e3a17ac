// Angles in the packed sexagesimal form used by "rad2dms" and "dms2rad".
//
// The packed form is a double laid out as ±DDD.MMSSsss: whole degrees before
// the point, then two digits of minutes, two digits of whole seconds and the
// decimals of the seconds (30°15'20.5" is 30.15205). Degrees are not reduced
// to one turn.
//
// A host may replace the two conversions with its own (for example those of
// its geometry library) through SetDmsConverters; the interpreter then calls
// the host's functions for every "rad2dms" and "dms2rad" in every script.
#pragma once

#include <orvobasic/export.h>
#include <orvobasic/geometry.h>

namespace ob {

// Radians to packed degrees-minutes-seconds, through the current converter.
double SignedRadToDms(double radians);
// Packed degrees-minutes-seconds to radians, through the current converter.
double SignedDmsToRad(double packed);

// The built-in conversions. Results are exact to a micro-second of arc for
// angles below 100 million degrees; NaN and infinities pass through.
double BuiltinRadToDms(double radians);
double BuiltinDmsToRad(double packed);

// SetDmsConverters (public, orvobasic/geometry.h) installs the host's
// converters; a script running meanwhile may see the old one for the call in
// progress.

}  // namespace ob
