#pragma once

#include "geometry/columns.h"

/// Where the fields of P1/90 records are, for whoever reads or writes one.
namespace halvern::p1_columns {

inline constexpr Columns kHeaderText{6, 32};
inline constexpr Columns kHeaderData{33, 80};

inline constexpr Columns kLine{2, 13};
inline constexpr Columns kPoint{20, 25};
inline constexpr Columns kLine1984{2, 17};  ///< of a P1/84 record, which else has the same columns
inline constexpr Columns kPoint1984{18, 25};
inline constexpr Columns kVessel{17, 17};
inline constexpr Columns kSource{18, 18};
inline constexpr Columns kLatitudeDegrees{26, 27};
inline constexpr Columns kLatitudeMinutes{28, 29};
inline constexpr Columns kLatitudeSeconds{30, 34};
inline constexpr Columns kLatitude{26, 34};  ///< as one number, in grads or degrees
inline constexpr Columns kNorthSouth{35, 35};
inline constexpr Columns kLongitudeDegrees{36, 38};
inline constexpr Columns kLongitudeMinutes{39, 40};
inline constexpr Columns kLongitudeSeconds{41, 45};
inline constexpr Columns kLongitude{36, 45};
inline constexpr Columns kEastWest{46, 46};
inline constexpr Columns kEasting{47, 55};
inline constexpr Columns kNorthing{56, 64};
inline constexpr Columns kWaterDepth{65, 70};
inline constexpr Columns kDay{71, 73};
inline constexpr Columns kHour{74, 75};
inline constexpr Columns kMinute{76, 77};
inline constexpr Columns kSecond{78, 79};

/// A receiver group record has three groups, each this many columns after the one before.
inline constexpr int kGroupStep = 26;
inline constexpr int kGroupsPerRecord = 3;
inline constexpr Columns kGroupNumber{2, 5};
inline constexpr Columns kGroupEasting{6, 14};
inline constexpr Columns kGroupNorthing{15, 23};
inline constexpr Columns kGroupDepth{24, 27};
inline constexpr Columns kStreamer{80, 80};

constexpr Columns of_group(Columns first, int group) {
    return {first.first + kGroupStep * group, first.last + kGroupStep * group};
}

}  // namespace halvern::p1_columns
