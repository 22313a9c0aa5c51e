#include "desk/flow_check.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <optional>

#include "desk/flow_parameters.h"
#include "flow/flow_rules.h"
#include "flow/process_flow_item.h"
#include "foundation/messages.h"
#include "foundation/prospect.h"
#include "foundation/report.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "job/catalogue.h"
#include "job/chain.h"
#include "native/native_layout.h"
#include "platform/file_lock.h"
#include "platform/input_file.h"
#include "tape/tape_drives.h"
#include "trace/header_definition.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

std::string in_quotes(const std::string& text) { return "'" + text + "'"; }

bool is_blank_or_comment(const std::string& line) {
    const std::size_t begin = line.find_first_not_of(" \t\r");
    return begin == std::string::npos || line[begin] == '#';
}

// An entry that stands for "no file", "no word".
bool is_none(const std::string& value) {
    return value.empty() || value == "NONE" || value.ends_with("/NONE") ||
           value.ends_with("\\NONE");
}

// Whether the parameter has the value that SetDefaults gives it.
bool has_default(const Parameter& parameter) {
    return std::visit(
        [](const auto& value) {
            if constexpr (requires { value.standard; }) {
                return *value.variable == value.standard;
            } else {
                return false;
            }
        },
        parameter.value);
}

// A whole number that the item has under that key.
std::optional<int> number_of(FlowItem& item, const std::string& key) {
    for (const Parameter& parameter : item.Parameters()) {
        const auto* bound = std::get_if<Bound<int>>(&parameter.value);
        if (bound && parameter.key == key) return *bound->variable;
    }
    return {};
}

/// The checks of one flow; findings gather as it goes.
class FlowCheck {
public:
    explicit FlowCheck(const FlowDocument& flow) : flow_(flow) {}

    std::vector<Finding> run() {
        read_defaults();
        check_lines();
        for (const FlowDocument::Section& section : flow_.sections()) check_section(section);
        build_chain();
        for (const Link& link : chain_) check_uses(link);
        check_ends();
        rehearse();
        std::ranges::stable_sort(findings_, {}, &Finding::line);
        return std::move(findings_);
    }

private:
    // An enabled section and its item, which the chain owns.
    struct Link {
        std::size_t section;
        FlowItem& item;
    };

    void add(std::size_t index, bool error, std::string text) {
        findings_.push_back({flow_.number(index), error, std::move(text)});
    }
    void error(std::size_t index, std::string text) { add(index, true, std::move(text)); }
    void warning(std::size_t index, std::string text) { add(index, false, std::move(text)); }

    void read_defaults();
    void check_lines();
    void check_section(const FlowDocument::Section& section);
    void check_line(const FlowDocument::Section& section, const ParameterList& list,
                    std::size_t index, std::map<std::string, std::size_t>& seen);
    void build_chain();
    void check_uses(const Link& link);
    void check_use(const Link& link, const Parameter& parameter, const std::string& value);
    void check_output(const Link& link, std::size_t line, const std::string& path);
    void check_unit(const Link& link, const Parameter& parameter);
    void check_ends();
    void rehearse();
    void add_reports(std::size_t section, const CollectedReports& reports);
    const TraceHeaderDefinition* definition(FlowItem& item);

    std::size_t keyword_line(const Link& link) const {
        return flow_.sections()[link.section].begin;
    }
    std::size_t line_of(const Link& link, const std::string& key) const;

    const FlowDocument& flow_;
    std::vector<Finding> findings_;
    FlowSections site_defaults_;
    std::map<std::size_t, CollectedReports> reports_;  // by section; outlive the items
    std::unique_ptr<FlowItem> head_;
    std::vector<Link> chain_;
    std::map<std::string, std::optional<TraceHeaderDefinition>> definitions_;  // by path
};

void FlowCheck::read_defaults() {
    Result<FlowSections> sections = read_site_defaults(TreePath(SystemDirectory(), "defaults"));
    if (sections) {
        site_defaults_ = std::move(*sections);
    } else {
        findings_.push_back({0, true, "the site defaults: " + sections.fault().reason()});
    }
}

void FlowCheck::check_lines() {
    const std::size_t first =
        flow_.sections().empty() ? flow_.line_count() : flow_.sections().front().begin;
    for (std::size_t i = 0; i < flow_.line_count(); ++i) {
        if (const auto name = prospect_of_line(flow_.line(i))) {
            if (Prospect().open(*name) != 0) error(i, "there is no prospect " + in_quotes(*name));
        } else if (i < first && !is_blank_or_comment(flow_.line(i))) {
            warning(i, "comes before the first section and is ignored");
        }
        if (flow_.is_continued(i)) {
            warning(i, "is longer than 198 characters; what follows is read as a line of its own");
        }
    }
}

void FlowCheck::check_section(const FlowDocument::Section& section) {
    if (!section.kind) {
        std::vector<std::string> keywords;
        for (const FlowItemKindEntry& entry : flow_item_kinds()) {
            keywords.emplace_back(entry.keyword);
        }
        const std::string near = nearest(section.word, keywords);
        return error(section.begin, "there is no flow item " + in_quotes(section.word) +
                                        (near.empty() ? "" : "; did you mean " + near + "?"));
    }
    const std::string keyword = flow_item_kind(*section.kind).keyword;
    if (section.word != keyword) {
        warning(section.begin, in_quotes(section.word) + " is read as " + keyword);
    }
    // Free of the section's own lines, for tables take every row that they are offered.
    const std::unique_ptr<FlowItem> item = quiet_item({.kind = *section.kind});
    if (!is_available(*item)) {
        if (section.disabled) return;
        return error(section.begin,
                     keyword + " is not available in this version; disable or remove it");
    }
    const ParameterList list = item->Parameters();
    std::map<std::string, std::size_t> seen;  // key: line
    for (std::size_t i = section.begin + 1; i < section.end; ++i) {
        check_line(section, list, i, seen);
    }
}

// What a job ignores, or takes for something else, without ending by it.
void FlowCheck::check_line(const FlowDocument::Section& section, const ParameterList& list,
                           std::size_t index, std::map<std::string, std::size_t>& seen) {
    std::string line = flow_.line(index);
    if (line.ends_with('\r')) line.pop_back();
    if (is_blank_or_comment(line) || prospect_of_line(line)) return;
    const auto pair = split_assignment(line);
    const Parameter* parameter = parameter_of_line(list, line);
    if (!parameter) {
        if (!pair) return warning(index, "is no KEY=VALUE and is ignored");
        std::vector<std::string> keys;
        for (const Parameter& known : list) {
            if (known.stored) keys.emplace_back(known.key);
        }
        const std::string near = nearest(pair->first, keys);
        return warning(index, flow_item_kind(*section.kind).keyword +
                                  std::string(" has no parameter ") + in_quotes(pair->first) +
                                  ", and the line is ignored" +
                                  (near.empty() ? "" : "; did you mean " + near + "?"));
    }
    if (const std::string fault = value_fault(*parameter, pair->second); !fault.empty()) {
        warning(index, pair->first + ": " + in_quotes(pair->second) + " " + fault);
    }
    if (const Rows* rows = std::get_if<Rows>(&parameter->value)) {
        const std::string doubt = rows->doubt ? rows->doubt(pair->second) : "";
        if (!doubt.empty()) warning(index, pair->first + ": " + doubt);
        return;
    }
    const auto [earlier, is_new] = seen.emplace(pair->first, index);
    if (!is_new) {
        warning(earlier->second, pair->first + " occurs again in line " +
                                     std::to_string(flow_.number(index)) + ", which counts");
        earlier->second = index;
    }
}

void FlowCheck::build_chain() {
    FlowSections sections;
    std::map<const FlowSection*, std::size_t> places;
    for (std::size_t i = 0; i < flow_.sections().size(); ++i) {
        if (flow_.sections()[i].disabled || !flow_.sections()[i].kind) continue;
        sections.push_back(flow_.flow_section(i, site_defaults_));
        places[&sections.back()] = i;
    }
    if (sections.empty()) {
        findings_.push_back({0, true, "there is no enabled item: nothing would be run"});
    }
    for (const CompositionFault& fault : composition_faults(sections)) {
        error(flow_.sections()[places[fault.section]].begin, fault.text);
        sections.remove_if([&](const FlowSection& section) { return &section == fault.section; });
    }
    head_ = BuildChain(sections, [&](const FlowSection& section) {
        const std::size_t place = places[&section];
        auto item = CreateFlowItem(section, LogFlag::rehearsal(reports_[place]));
        if (item) chain_.push_back({place, *item});
        return item;
    });
}

void FlowCheck::check_uses(const Link& link) {
    if (!is_available(link.item)) return;
    for (const Parameter& parameter : link.item.Parameters()) {
        if (parameter.field.applies && !parameter.field.applies()) {
            const std::size_t line = line_of(link, parameter.key);
            if (line != keyword_line(link) && !has_default(parameter)) {
                warning(line, std::string(parameter.key) +
                                  " has no effect: another setting switches it off");
            }
            continue;
        }
        check_unit(link, parameter);
        if (const auto* text = std::get_if<Bound<std::string>>(&parameter.value)) {
            check_use(link, parameter, *text->variable);
        }
    }
    if (const std::string refusal = link.item.RefuseParameters(); !refusal.empty()) {
        warning(keyword_line(link), flow_.item_name(link.section) + ": " + refusal);
    }
}

// The line that gives the section's parameter its value; the keyword line when it has its default.
std::size_t FlowCheck::line_of(const Link& link, const std::string& key) const {
    const FlowDocument::Section& at = flow_.sections()[link.section];
    for (std::size_t i = at.end; i-- > at.begin + 1;) {
        if (flow_.line(i).starts_with(key + "=")) return i;
    }
    return at.begin;
}

void FlowCheck::check_unit(const Link& link, const Parameter& parameter) {
    double value = 0;
    if (const auto* whole = std::get_if<Bound<int>>(&parameter.value)) value = *whole->variable;
    if (const auto* real = std::get_if<Bound<float>>(&parameter.value)) {
        value = static_cast<double>(*real->variable);
    }
    const double size = std::fabs(value);
    constexpr double kSlowest = 50;  // m/s or ft/s: km/s are below, and no wave is as slow
    const std::string prompt = upper(parameter.field.prompt);
    if (size > 0 && size < kSlowest && prompt.find("VELOCITY") != std::string::npos) {
        warning(line_of(link, parameter.key),
                std::string(parameter.key) + ": a velocity of " + in_words(value) +
                    " is one in kilometres; it is taken in the unit of the offsets a second");
    }
    const bool in_ms = unit_in(parameter.field.prompt).starts_with("msec");
    if (in_ms && size > 0 && size < 4 && std::holds_alternative<Bound<int>>(parameter.value)) {
        warning(line_of(link, parameter.key), std::string(parameter.key) + ": " + in_words(value) +
                                                  " is taken in milliseconds, not in seconds");
    }
}

void FlowCheck::check_use(const Link& link, const Parameter& parameter, const std::string& value) {
    const std::size_t line = line_of(link, parameter.key);
    const std::string key = parameter.key;
    switch (parameter.field.kind) {
        case FieldKind::kInputFile:
            if (is_none(value)) {
                if (!parameter.field.optional) error(line, key + ": no file has been chosen");
            } else if (std::error_code failed; !fs::exists(value, failed)) {
                error(line, key + ": the file " + in_quotes(value) + " does not exist");
            } else if (const auto file = InputFile::open(value); !file) {
                error(line,
                      key + ": " + in_quotes(value) + " cannot be read: " + file.fault().reason());
            }
            break;
        case FieldKind::kOutputFile:
            check_output(link, line, value);
            break;
        case FieldKind::kHeaderWord: {
            const TraceHeaderDefinition* words = is_none(value) ? nullptr : definition(link.item);
            if (!words || words->find(value) >= 0) break;
            std::vector<std::string> names;
            for (const HeaderWord& word : words->words()) names.push_back(word.name);
            const std::string near = nearest(value, names);
            warning(line, key + ": the header description has no word " + in_quotes(value) +
                              (near.empty() ? "" : "; did you mean " + near + "?"));
            break;
        }
        case FieldKind::kTapeDevice:
            if (!find_tape_device(value)) {
                warning(line,
                        key + ": " + in_quotes(value) + " is no tape device of the configuration");
            }
            break;
        case FieldKind::kEntry:
            break;
    }
}

void FlowCheck::check_output(const Link& link, std::size_t line, const std::string& path) {
    enum WriteType { kAppend = 0, kOverwrite = 1, kOverwriteInput = 2 };
    const int write_type = number_of(link.item, "WRITETYPE").value_or(kOverwrite);
    if (write_type == kOverwriteInput) return;  // the entry is not used
    if (is_none(path)) return error(line, "no output file has been chosen");
    std::error_code failed;
    const fs::path folder = fs::absolute(path, failed).parent_path();
    if (!fs::is_directory(folder, failed)) {
        return error(line, "the directory " + in_quotes(folder.string()) + " does not exist");
    }
    if (fs::is_directory(path, failed)) return error(line, in_quotes(path) + " is a directory");
    if (!fs::exists(path, failed)) return;
    if (const auto lock = FileLock::take(path, FileLock::Missing::kFault);
        !lock && lock.fault().code() == std::errc::device_or_resource_busy) {
        return error(line, in_quotes(path) + ": " + lock.fault().reason());
    }
    warning(line, in_quotes(path) + (write_type == kAppend ? " exists; traces are added to it"
                                                           : " exists and will be replaced"));
}

// Whether it begins and ends as a flow should, and stacks what it sorts.
void FlowCheck::check_ends() {
    if (chain_.empty()) return;
    if (is_available(*head_) && !dynamic_cast<RunsFlow*>(head_.get())) {
        warning(keyword_line(chain_.front()),
                flow_.item_name(chain_.front().section) +
                    " cannot begin a flow: nothing would be run; put an input before it");
    }
    bool shows = false;
    std::vector<std::string> sorted;
    for (const Link& link : chain_) {
        const FlowItemKindEntry& entry = flow_item_kind(link.item.GetKindId());
        shows |=
            entry.menu == FlowItemMenu::kOutput || link.item.IsDisplay() || link.item.IsExclusive();
        for (const Parameter& parameter : link.item.Parameters()) {
            const auto* text = std::get_if<Bound<std::string>>(&parameter.value);
            if (!text) continue;
            shows |= parameter.field.kind == FieldKind::kOutputFile && !is_none(*text->variable);
            if (parameter.field.kind != FieldKind::kHeaderWord) continue;
            if (entry.kind == FlowItemKind::kTraceSort) sorted.push_back(*text->variable);
            if (entry.kind == FlowItemKind::kStack && !sorted.empty() &&
                std::ranges::find(sorted, *text->variable) == sorted.end()) {
                warning(line_of(link, parameter.key),
                        std::string(parameter.key) + ": the flow stacks by " + *text->variable +
                            ", but sorts by " + sorted.front());
            }
        }
    }
    if (!shows) {
        findings_.push_back({0, false, "no item writes or shows anything: the traces are lost"});
    }
}

void FlowCheck::rehearse() {
    const bool sound = !has_error(findings_);
    try {
        if (auto* runs = dynamic_cast<RunsFlow*>(head_.get())) runs->Rehearse();
    } catch (const JobEnded&) {
        const bool said = std::ranges::any_of(
            reports_, [](const auto& each) { return !each.second.of(Weight::kError).empty(); });
        if (!said && sound) {
            findings_.push_back({0, true, "the job would end before its first trace"});
        }
    }
    for (const Link& link : chain_) add_reports(link.section, reports_[link.section]);
}

// What the item of a section has said; an error that a line has been found to cause is not said
// twice.
void FlowCheck::add_reports(std::size_t section, const CollectedReports& reports) {
    const FlowDocument::Section& at = flow_.sections()[section];
    const int first = flow_.number(at.begin);
    const int last = flow_.number(at.end - 1);
    const bool known = std::ranges::any_of(findings_, [&](const Finding& finding) {
        return finding.error && finding.line >= first && finding.line <= last;
    });
    const auto is_quoted = [&](const std::string& text) {  // by what has been found of a line
        const std::size_t begin = text.find('\'');
        const std::size_t end = text.find('\'', begin + 1);
        if (begin == std::string::npos || end == std::string::npos) return false;
        const std::string quoted = text.substr(begin, end - begin + 1);
        return std::ranges::any_of(findings_, [&](const Finding& finding) {
            return finding.line > first && finding.line <= last &&
                   finding.text.find(quoted) != std::string::npos;
        });
    };
    for (const CollectedReports::Entry& entry : reports.entries()) {
        const bool is_error = entry.weight == Weight::kError;
        std::string text = entry.text;
        if (is_error ? known : entry.weight != Weight::kWarning || is_quoted(text)) continue;
        if (text.ends_with('.')) text.pop_back();
        add(at.begin, is_error, flow_.item_name(section) + ": " + text);
    }
}

// The header description of the input's traces; null when it cannot be known yet.
const TraceHeaderDefinition* FlowCheck::definition(FlowItem& item) {
    const char* header = item.GetInputHeaderName();
    std::string path = header ? header : "";
    if (path.empty()) {  // a dataset brings its own
        const char* input = item.GetInputName();
        const auto parts = NativeMain::read(input ? input : "");
        if (!parts) return nullptr;
        path = parts->desc_path;
    }
    const auto [entry, is_new] = definitions_.try_emplace(path);
    if (is_new) {
        TraceHeaderDefinition description;
        if (description.load(path) == 0) entry->second = std::move(description);
    }
    return entry->second ? &*entry->second : nullptr;
}

}  // namespace

std::vector<Finding> check_flow(const FlowDocument& flow) { return FlowCheck(flow).run(); }

bool has_error(const std::vector<Finding>& findings) {
    return std::ranges::any_of(findings, &Finding::error);
}

}  // namespace halvern
