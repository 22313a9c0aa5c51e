#pragma once

#include <compare>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "foundation/progress.h"

namespace halvern {

/// What the log calls a sort of numbers that were looked for in vain.
struct MissWords {
    const char* sort;     ///< one word
    const char* heading;  ///< in front of the list; ends with "\n"
    bool pairs;           ///< whether both numbers of an entry are listed
};

/// Numbers, or pairs of numbers, that were looked for in vain: each once, in ascending order, up to
/// a limit beyond which nothing is kept.
class MissList {
public:
    static constexpr std::size_t kRoom = 1000;

    struct Entry {
        int first;
        int second;  // 0 where an entry is one number
        auto operator<=>(const Entry&) const = default;
    };

    /// `words` outlives the list, which is empty and has room for all entries.
    explicit MissList(const MissWords& words);
    /// Adds an entry unless it is there. The first one that there is no room for lists the others.
    void add(Entry entry, const Reporter& report);
    /// Warns of the entries, when there are any.
    void list(const Reporter& report) const;

private:
    const MissWords* words_;
    std::vector<Entry> entries_;
    bool overflowed_ = false;
};

/// Stops reading when the job is asked to stop; says nothing.
class StopWithJob final : public Progress {
public:
    void Start(const char*) override {}
    bool Update(int) override { return !JobStopRequested(); }
    void Finish() override {}
};

/// An item that fills geometry words from files. A trace that the files do not have passes as it
/// is, or is kept back, and what was looked for is listed at the end of the run.
class MergeFlowItem : public ProcessFlowItem {
public:
    void LogParameters() override;
    bool PassesEveryTrace() const override { return kill_bad_ == 0; }

protected:
    using ProcessFlowItem::ProcessFlowItem;

    /// FILE and its like: NONE in the prospect's directory of coordinate files unless chosen.
    static Parameter FileParameter(const char* key, std::string& path, const char* log,
                                   const char* label, const char* prompt, const char* help);
    Parameter KillParameter(const char* help);

    /// Empties the lists of what is not found, one for each of `words`, which outlive the item.
    void ClearMisses(std::span<const MissWords> words);
    /// Notes an entry of one of the lists, and gives what ProcessTrace answers for the trace.
    int Miss(std::size_t list, MissList::Entry entry);
    /// Lists what was not found, and forgets it.
    void ListMisses();

private:
    int kill_bad_{};
    std::vector<MissList> misses_;
};

}  // namespace halvern
