#include "items/normal_moveout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "flow/shared_parameters.h"
#include "numerics/moveout.h"

namespace halvern {

namespace {

enum Word : std::size_t { kOffset, kCrossline, kInline };
constexpr HeaderWordRow kWords[] = {
    {HeaderWordRow::kInput, kOffset, "OFFSET", "Source to receiver offset"},
    {HeaderWordRow::kInput, kCrossline, "XLINE", "Crossline bin number"},
    {HeaderWordRow::kInput, kInline, "INLINE", "Inline bin number"},
};

}  // namespace

NormalMoveout::NormalMoveout(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kNormalMoveout, log), words_(kWords) {
    Configure(section);
}

ParameterList NormalMoveout::Parameters() {
    return {
        {.key = "MUTE_THRESH",
         .format = "%f",
         .value = Bound{&mute_percent_, 0.0f},
         .log = "Stretch Mute Percentage = %3.1f\n",
         .field = {.label = "Stretch",
                   .prompt = "Enter the stretch mute percentage (0 means no mute)"}},
        Table().parameter(typed_, *this,
                          {.label = "Spread", .prompt = "Enter the time/velocity pairs."}),
        table_file_parameter(file_),
    };
}

std::vector<std::string> NormalMoveout::FilesRead() const {
    if (file_ == "NONE") return {};
    return {file_};
}

const RowTable<NormalMoveout::Entry>& NormalMoveout::Table() {
    static const RowTable<Entry> kTable(
        {.key = "TIME_VEL",
         .entry = "Time/Velocity",
         .row = "time/velocity entry",
         .window = {2, 3, 0, 1},
         .quoted = {2, 3, 0, 1},
         .checked = {2, 3, 0, 1}},
        {{{.title = "Time", .label = "Time", .unit = "ms", .least = 10, .most = 60000},
          &Entry::time_ms},
         {{.title = "Velocity",
           .label = "Velocity",
           .unit = "offset units a second",
           .least = 100,
           .most = 30000},
          &Entry::velocity},
         {{.title = "Crossline Number", .label = "Crossline", .heading = "XLINE"},
          &Entry::crossline},
         {{.title = "Inline Number", .label = "Inline"}, &Entry::in_line}});
    return kTable;
}

DialogTexts NormalMoveout::WindowTexts() const {
    DialogTexts texts = ProcessFlowItem::WindowTexts();
    texts.title = "NMO Parameters";
    texts.already_up = "NMO Interface is already up.";
    return texts;
}

void NormalMoveout::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("Pair# XLINE  INLINE --TIME-- VELOCITY\n");
    for (int number = 1; const Entry& entry : typed_) {
        Message("%5d %6d %6d %8.1f %8.1f\n", number++, entry.crossline, entry.in_line,
                entry.time_ms, entry.velocity);
    }
}

void NormalMoveout::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                               int) {
    if (!Table().find_rows(*this, typed_, file_, entries_)) return;
    if (entries_.empty()) {
        Error("There are no time/velocity pairs.  Enter at least one pair before running.\n");
        return TerminateJob(kJobError);
    }
    if (!CheckEntries()) return;
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    words_.list(*this, HeaderWordRow::kInput);
    if (!words_.find(*this, header) || !RequireSampleInterval(*this, line)) return;
    delay_.prepare(header);
    interval_ms_ = line.sample_interval().ms();
    interval_s_ = interval_ms_ / 1000;
    if (!(mute_percent_ >= 0)) mute_percent_ = 0;
    stretch_limit_ = static_cast<double>(mute_percent_) / 100;

    const auto samples = static_cast<std::size_t>(std::max(line.samples(), 0));
    GroupEntries();
    velocities_.resize(locations_.size() * samples);
    for (std::size_t i = 0; i < locations_.size(); ++i) {
        SpreadVelocities(locations_[i], std::span(velocities_).subspan(i * samples, samples));
    }
    times_squared_.resize(samples);
    previous_squared_.resize(samples);
    rises_.resize(samples);
    // Summed up, not multiplied: the last bits of the time decide which sample it falls into.
    double time = 0;
    for (std::size_t i = 0; i < samples; ++i, time += interval_s_) {
        times_squared_[i] = time * time;
        previous_squared_[i] = (time - interval_s_) * (time - interval_s_);
        rises_[i] = times_squared_[i] - previous_squared_[i];
    }
    velocity_squared_.resize(samples);
    moved_times_.resize(samples);
    sources_.resize(samples);
    input_.assign(samples + 1, 0.0f);
    placed_ = false;
}

void NormalMoveout::EndRun() {
    locations_ = {};
    velocities_ = {};
    times_squared_ = {};
    previous_squared_ = {};
    rises_ = {};
    velocity_squared_ = {};
    moved_times_ = {};
    sources_ = {};
    input_ = {};
    placed_ = false;
}

bool NormalMoveout::CheckEntries() {
    std::map<std::pair<int, int>, double> last_time;
    for (int number = 1; const Entry& entry : entries_) {
        const char* fault = nullptr;
        if (!std::isfinite(entry.velocity) || entry.velocity <= 0) {
            fault = "has no velocity above zero";
        } else if (!std::isfinite(entry.time_ms)) {
            fault = "has no finite time";
        } else {
            const auto [last, first_here] =
                last_time.try_emplace({entry.crossline, entry.in_line}, entry.time_ms);
            if (!first_here && entry.time_ms < last->second) {
                fault = "is earlier than the one before it at the same place";
            }
            last->second = entry.time_ms;
        }
        if (fault) {
            Error(
                "Time/Velocity Pair #%d (crossline %d, inline %d, time %3.1f, velocity %3.1f) "
                "%s.\n",
                number, entry.crossline, entry.in_line, entry.time_ms, entry.velocity, fault);
            TerminateJob(kJobError);
            return false;
        }
        ++number;
    }
    return true;
}

void NormalMoveout::GroupEntries() {
    locations_.clear();
    std::map<std::pair<int, int>, std::size_t> known;
    for (const Entry& entry : entries_) {
        const auto [place, is_new] =
            known.try_emplace({entry.crossline, entry.in_line}, locations_.size());
        if (is_new) {
            locations_.push_back({.crossline = entry.crossline,
                                  .in_line = entry.in_line,
                                  .times_ms = {},
                                  .velocities = {}});
        }
        locations_[place->second].times_ms.push_back(entry.time_ms);
        locations_[place->second].velocities.push_back(entry.velocity);
    }
}

void NormalMoveout::SpreadVelocities(const Location& location, std::span<double> velocities) const {
    const std::vector<double>& times = location.times_ms;
    const std::vector<double>& table = location.velocities;
    std::size_t next = 0;
    double time = 0;
    for (double& velocity : velocities) {
        if (next == times.size()) {
            velocity = table.back();
        } else if (time == times[next]) {
            velocity = table[next++];
        } else {
            while (next < times.size() && times[next] < time) ++next;
            if (next == 0) {
                velocity = table.front();
            } else if (next == times.size()) {
                velocity = table.back();
            } else {
                const double span = times[next] - times[next - 1];
                const double step = table[next] - table[next - 1];
                velocity = table[next - 1];
                if (span != 0) velocity += step * ((time - times[next - 1]) / span);
            }
        }
        time += interval_ms_;
    }
}

// The squared velocities at a place. Traces of one place usually follow one another, so they are
// kept until a trace comes from elsewhere.
void NormalMoveout::MoveTo(int crossline, int in_line) {
    if (placed_ && crossline == crossline_ && in_line == in_line_) return;
    placed_ = true;
    crossline_ = crossline;
    in_line_ = in_line;

    // The nearest location in each quadrant; the first one of those equally far. An exact match
    // counts alone. A slot that stays empty weighs nothing, whatever it points at.
    struct Slot {
        std::size_t location = 0;
        double distance = 0;  // squared, in bins; 0: empty
        double weight = 0;
    };
    std::array<Slot, 4> slots;
    for (std::size_t i = 0; i < locations_.size(); ++i) {
        const double across = static_cast<double>(locations_[i].crossline) - crossline;
        const double along = static_cast<double>(locations_[i].in_line) - in_line;
        const double distance = across * across + along * along;
        if (distance == 0) {
            slots = {Slot{.location = i, .distance = 1}};
            break;
        }
        Slot& slot = slots[(across < 0 ? 0u : 2u) + (along < 0 ? 0u : 1u)];
        if (slot.distance == 0 || distance < slot.distance) slot = {i, distance, 0};
    }
    double sum = 0;
    for (Slot& slot : slots) {
        if (slot.distance > 0) slot.weight = 1 / slot.distance;
        sum += slot.weight;
    }
    for (Slot& slot : slots) slot.weight /= sum;

    const std::size_t samples = velocity_squared_.size();
    const double* const v0 = velocities_.data() + slots[0].location * samples;
    const double* const v1 = velocities_.data() + slots[1].location * samples;
    const double* const v2 = velocities_.data() + slots[2].location * samples;
    const double* const v3 = velocities_.data() + slots[3].location * samples;
    for (std::size_t i = 0; i < samples; ++i) {
        const double velocity = slots[0].weight * v0[i] + slots[1].weight * v1[i] +
                                slots[2].weight * v2[i] + slots[3].weight * v3[i];
        velocity_squared_[i] = velocity * velocity;
    }
}

// Fills sources_ for a trace at the place that MoveTo went to.
void NormalMoveout::FindSources(double offset) {
    const double offset_squared = offset * offset;
    numerics::moveout(times_squared_, offset_squared, velocity_squared_, interval_s_, moved_times_,
                      sources_);
    if (stretch_limit_ > 0) MuteStretched(offset_squared);
}

// The stretch is interval / (t - u) - 1, with t a sample's moved time and u that of a time one
// interval earlier. As the rise, t² - u², does not depend on the offset, and t - interval <= u <=
// t, nearly every sample can be judged without the root and the division that u and the stretch
// take. The others, and the doubtful ones in between, are judged by the stretch itself, so that the
// result is the same.
void NormalMoveout::MuteStretched(double offset_squared) {
    const auto nowhere = static_cast<std::int32_t>(sources_.size());
    const double step = interval_s_ / (1 + stretch_limit_);  // t - u at the limit
    // Far more than the rounding of times up to the trace's end makes out.
    const double doubt = 1e-6 * step + 1e-14 * interval_s_ * static_cast<double>(sources_.size());
    const double kept_above = 2 * (step + doubt);
    const double muted_below = step - doubt;
    // Mostly everything from some sample on is kept: what is left to look at ends there.
    const double* const rises = rises_.data();
    const double* const moved = moved_times_.data();
    std::size_t open = sources_.size();
    while (open > 1 && rises[open - 1] > moved[open - 1] * kept_above) --open;
    for (std::size_t i = 1; i < open; ++i) {
        if (rises[i] > moved[i] * kept_above || sources_[i] == nowhere) continue;
        if (!(rises[i] < (2 * moved[i] - interval_s_) * muted_below)) {
            const double before =
                std::sqrt(previous_squared_[i] + offset_squared / velocity_squared_[i]);
            if (!(interval_s_ / (moved[i] - before) - 1 >= stretch_limit_)) continue;
        }
        sources_[i] = nowhere;
        if (i == 1) sources_[0] = nowhere;  // it has no stretch of its own
    }
}

int NormalMoveout::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    delay_.look(*this, header);
    MoveTo(header.get_int(words_[kCrossline]), header.get_int(words_[kInline]));
    FindSources(header.get_double(words_[kOffset]));
    const std::size_t count = std::min(trace.size(), sources_.size());
    std::ranges::copy(trace.first(count), input_.begin());
    for (std::size_t i = 0; i < count; ++i) {
        trace[i] = input_[static_cast<std::size_t>(sources_[i])];
    }
    samples.set_floats(trace);
    return kPassOn;
}

}  // namespace halvern
