#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace halvern {

/// Ids of the item kinds, as everything that stores a kind stores it.
enum class FlowItemKind : int {
    kSegdTapeInput = 0,
    kSegyTapeInput = 1,
    kSegyDiskInput = 2,
    kNativeDiskInput = 3,
    kSegyDiskOutput = 4,
    kSegyTapeOutput = 5,
    kNativeDiskOutput = 6,
    kHeaderMap2d = 7,
    kHeaderMap3d = 8,
    kTraceDisplay2d = 9,
    kGeometryDisplay = 10,
    kBinningDisplay = 11,
    kCoordinateDisplay = 12,
    kSpectralDisplay = 13,
    kDeconvolutionDisplay = 14,
    kMultiComponentDisplay = 15,
    kHeaderMath = 16,
    kAgc = 17,
    kAsciiInput = 18,
    kAsciiOutput = 19,
    kAttribute = 20,
    kFilter = 21,
    kDeconvolution = 22,
    kLinearMoveout = 23,
    kMergeP1 = 24,
    kMergeSps = 25,
    kMute = 26,
    kNormalMoveout = 27,
    kResample = 28,
    kTimeShift = 29,
    kTraceMath = 30,
    kTraceMix = 31,
    kTraceBinning = 32,
    kTraceSelect = 33,
    kTraceWindow = 34,
    kWriteCoordinates = 35,
    kTraceSort = 36,
    kStack = 37,
    kNumberOfKinds  ///< is none
};
inline constexpr int kFlowItemKinds = static_cast<int>(FlowItemKind::kNumberOfKinds);

/// The intermediate base a kind derives from.
enum class FlowItemBase { kInput, kProcess, kBuffering, kDisplay, kExclusive };

/// The group of the list "FLOW ITEMS TO ADD" that offers a kind.
enum class FlowItemMenu { kNone, kInput, kOutput, kProcess, kDisplay };

/// "Input Flow Items" and so on; empty for kNone.
std::string_view menu_label(FlowItemMenu menu);

/// What is fixed about a kind.
struct FlowItemKindEntry {
    FlowItemKind kind;
    const char* name;     ///< item name and menu label
    const char* keyword;  ///< in flow files, after "$"
    FlowItemBase base;
    FlowItemMenu menu;
    int menu_order;  ///< place in the whole list, counted from 1; 0 when not offered
};

/// All kinds, indexed by id.
std::span<const FlowItemKindEntry, kFlowItemKinds> flow_item_kinds();
const FlowItemKindEntry& flow_item_kind(FlowItemKind kind);

/// The kind whose keyword `text` begins with ("AGCX" is AGC), the longest one where several do
/// ("DECONDISPLAY" is not DECON). Nothing when none matches.
std::optional<FlowItemKind> match_keyword(std::string_view text);

}  // namespace halvern
