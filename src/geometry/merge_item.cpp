#include "geometry/merge_item.h"

#include <algorithm>
#include <utility>

#include "foundation/prospect.h"

namespace halvern {

MissList::MissList(const MissWords& words) : words_(&words) { entries_.reserve(kRoom); }

void MissList::add(Entry entry, const Reporter& report) {
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), entry);
    if (place != entries_.end() && *place == entry) return;
    if (entries_.size() < kRoom) {
        entries_.insert(place, entry);
    } else if (!std::exchange(overflowed_, true)) {
        report.Warning("%d %s numbering errors encountered.  No more will be printed.\n",
                       static_cast<int>(kRoom), words_->sort);
        list(report);
    }
}

void MissList::list(const Reporter& report) const {
    if (entries_.empty()) return;
    report.Warning("%s", words_->heading);
    for (const auto& [first, second] : entries_) {
        if (words_->pairs) {
            report.Warning("%d/%d\n", first, second);
        } else {
            report.Warning("%d\n", first);
        }
    }
}

Parameter MergeFlowItem::FileParameter(const char* key, std::string& path, const char* log,
                                       const char* label, const char* prompt, const char* help) {
    const Prospect& prospect = CurrentProspect();
    return {
        .key = key,
        .format = "%s",
        .value = Bound{&path, prospect.is_open() ? prospect.path("nav", "NONE") : "NONE"},
        .log = log,
        .field = {.label = label, .prompt = prompt, .help = help, .kind = FieldKind::kInputFile}};
}

Parameter MergeFlowItem::KillParameter(const char* help) {
    return {.key = "KILLBAD",
            .format = "%d",
            .value = Bound{&kill_bad_, 1},
            .field = {.label = "Kill",
                      .prompt = "Kill the un-merged traces from the file?",
                      .help = help,
                      .choices = {{"Save all traces", 0}, {"Kill un-merged traces", 1}}}};
}

void MergeFlowItem::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("Traces which do not merge are %s\n", kill_bad_ != 0 ? "KILLED" : "SAVED");
}

void MergeFlowItem::ClearMisses(std::span<const MissWords> words) {
    misses_.clear();
    misses_.reserve(words.size());
    for (const MissWords& sort : words) misses_.emplace_back(sort);
}

int MergeFlowItem::Miss(std::size_t list, MissList::Entry entry) {
    misses_[list].add(entry, *this);
    return kill_bad_ != 0 ? kKeepBack : kPassOn;
}

void MergeFlowItem::ListMisses() {
    for (const MissList& list : misses_) list.list(*this);
    misses_ = {};
}

}  // namespace halvern
