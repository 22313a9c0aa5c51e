#include "desk/flow_check.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "desk/flow_parameters.h"
#include "flow/disk_output_flow_item.h"
#include "flow/process_flow_item.h"
#include "foundation/global_config.h"
#include "foundation/key_readers.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "inspect/captured_log.h"
#include "job/catalogue.h"
#include "native/native_layout.h"
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

/// The checks of one flow; findings gather as it goes.
class FlowCheck {
public:
    explicit FlowCheck(const FlowText& flow) : flow_(flow) {}

    std::vector<Finding> run() {
        read_site_defaults();
        check_lines_outside();
        for (std::size_t i = 0; i < flow_.sections().size(); ++i) check_section(i);
        check_composition();
        build_chain();
        for (const Link& link : chain_) check_uses(link);
        std::ranges::stable_sort(findings_, {}, &Finding::line);
        return std::move(findings_);
    }

private:
    // An enabled section and its item, which the chain owns.
    struct Link {
        std::size_t section;
        FlowItem& item;
    };

    void error(std::size_t index, std::string text) {
        findings_.push_back({static_cast<int>(index) + 1, true, std::move(text)});
    }
    void warning(std::size_t index, std::string text) {
        findings_.push_back({static_cast<int>(index) + 1, false, std::move(text)});
    }

    void read_site_defaults();
    void check_lines_outside();
    void check_section(std::size_t index);
    void check_parameters(std::size_t index);
    void check_line(const FlowText::Section& section, const ParameterList& list, std::size_t index,
                    std::map<std::string, std::size_t>& seen);
    void check_composition();
    void build_chain();
    void check_uses(const Link& link);
    void check_use(const Link& link, const Parameter& parameter, const std::string& value);
    void check_output(const Link& link, std::size_t line, const std::string& path);
    const TraceHeaderDefinition* definition(FlowItem& item);

    std::string name_of(std::size_t section) const { return flow_.item_name(section); }
    std::size_t line_of(std::size_t section, const std::string& key) const;

    const FlowText& flow_;
    std::vector<Finding> findings_;
    std::vector<FlowSection> site_defaults_;
    // Declared before the links, which point into it. Quiet: items say when they end.
    struct Chain {
        std::unique_ptr<FlowItem> head;
        ~Chain() {
            const CapturedLog log;
            head.reset();
        }
    } owner_;
    std::vector<Link> chain_;
    std::map<std::string, std::optional<TraceHeaderDefinition>> definitions_;  // by path
    std::map<std::string, std::size_t> outputs_;  // path: line that writes it
};

void FlowCheck::read_site_defaults() {
    std::error_code ignored;
    std::set<std::string> files;
    for (const auto& entry :
         fs::directory_iterator(TreePath(SystemDirectory(), "defaults"), ignored)) {
        if (entry.is_regular_file(ignored)) files.insert(entry.path().string());
    }
    for (const std::string& path : files) {
        const CapturedLog log;
        FlowParameterFile file(path);
        if (file.read({}) != 0) {
            findings_.push_back({0, true,
                                 "the site defaults " + in_quotes(path) +
                                     " have an unknown keyword or cannot be read"});
        }
        for (const FlowSection& section : file.sections()) {
            if (!section.disabled) site_defaults_.push_back(section);
        }
    }
}

void FlowCheck::check_lines_outside() {
    const std::size_t first =
        flow_.sections().empty() ? flow_.lines().size() : flow_.sections().front().begin;
    for (std::size_t i = 0; i < flow_.lines().size(); ++i) {
        const std::string& line = flow_.lines()[i];
        if (std::string name; ReadKey(line.c_str(), "$PROSPECT=", name)) {
            const CapturedLog log;
            if (Prospect().open(name) != 0) error(i, "there is no prospect " + in_quotes(name));
        } else if (i < first && !is_blank_or_comment(line)) {
            warning(i, "stands before the first section and is ignored");
        }
    }
}

void FlowCheck::check_section(std::size_t index) {
    const FlowText::Section& section = flow_.sections()[index];
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
    check_parameters(index);
}

void FlowCheck::check_parameters(std::size_t index) {
    const FlowText::Section& section = flow_.sections()[index];
    // Free of the section's own lines, for tables take every row that they are offered.
    const QuietItem item(
        {.kind = *section.kind, .keyword = flow_item_kind(*section.kind).keyword, .lines = {}});
    if (!is_available(*item)) {
        if (section.disabled) return;
        return error(section.begin, flow_item_kind(*section.kind).keyword +
                                        std::string(" is not available in this version; disable "
                                                    "or remove it"));
    }
    const ParameterList list = item->Parameters();
    std::map<std::string, std::size_t> seen;  // key: line
    for (std::size_t i = section.begin + 1; i < section.end; ++i) {
        check_line(section, list, i, seen);
    }
}

void FlowCheck::check_line(const FlowText::Section& section, const ParameterList& list,
                           std::size_t index, std::map<std::string, std::size_t>& seen) {
    std::string line = flow_.lines()[index];
    if (line.ends_with('\r')) line.pop_back();
    if (is_blank_or_comment(line) || line.starts_with("$PROSPECT=")) return;
    const std::string keyword = flow_item_kind(*section.kind).keyword;
    const auto pair = split_assignment(line);
    const Parameter* parameter = parameter_of_line(list, line);
    if (!parameter) {
        if (!pair) return warning(index, "is no KEY=VALUE and is ignored");
        std::vector<std::string> keys;
        for (const Parameter& known : list) {
            if (known.stored) keys.emplace_back(known.key);
        }
        const std::string near = nearest(pair->first, keys);
        return error(index, keyword + " has no parameter " + in_quotes(pair->first) +
                                (near.empty() ? "" : "; did you mean " + near + "?"));
    }
    if (const std::string fault = value_fault(*parameter, pair->second); !fault.empty()) {
        error(index, pair->first + ": " + in_quotes(pair->second) + " " + fault);
    }
    if (std::holds_alternative<Rows>(parameter->value)) return;
    const auto [earlier, is_new] = seen.emplace(pair->first, index);
    if (!is_new) {
        warning(earlier->second, pair->first + " stands again in line " +
                                     std::to_string(index + 1) + ", which counts");
        earlier->second = index;
    }
}

void FlowCheck::check_composition() {
    bool first = true;
    bool sorted = false;
    std::vector<std::size_t> enabled;
    for (std::size_t i = 0; i < flow_.sections().size(); ++i) {
        if (!flow_.sections()[i].disabled && flow_.sections()[i].kind) enabled.push_back(i);
    }
    if (enabled.empty()) {
        findings_.push_back({0, true, "there is no enabled item: nothing would be run"});
    }
    for (const std::size_t i : enabled) {
        const FlowText::Section& section = flow_.sections()[i];
        const FlowItemKindEntry& kind = flow_item_kind(*section.kind);
        if (kind.base == FlowItemBase::kExclusive && enabled.size() > 1) {
            error(section.begin, std::string(kind.keyword) + " must be the only item of its flow");
        }
        if (kind.base == FlowItemBase::kInput && !first) {
            error(section.begin, std::string(kind.keyword) +
                                     " is an input, and a flow has one input, its first item");
        }
        if (kind.kind == FlowItemKind::kTraceSort) sorted = true;
        if (sorted && kind.base == FlowItemBase::kDisplay) {
            error(section.begin,
                  std::string(kind.keyword) +
                      " is a display and cannot stand behind SORT; sort into a file first");
        }
        first = false;
    }
}

void FlowCheck::build_chain() {
    FlowItem* last = nullptr;
    for (std::size_t i = 0; i < flow_.sections().size(); ++i) {
        if (flow_.sections()[i].disabled || !flow_.sections()[i].kind) continue;
        FlowSection section = flow_.flow_section(i);
        std::vector<std::string> lines;
        for (const FlowSection& site : site_defaults_) {
            if (site.kind != section.kind) continue;
            lines.insert(lines.end(), site.lines.begin(), site.lines.end());
        }
        section.lines.insert(section.lines.begin(), lines.begin(), lines.end());
        const CapturedLog log;
        std::unique_ptr<FlowItem> item = CreateFlowItem(section, LogFlag::kQuiet);
        if (!item) continue;
        if (last) {
            last = &last->SetNext(std::move(item));
        } else {
            owner_.head = std::move(item);
            last = owner_.head.get();
        }
        chain_.push_back({i, *last});
    }
    if (chain_.empty() || !is_available(*owner_.head)) return;
    if (!dynamic_cast<RunsFlow*>(owner_.head.get())) {
        error(flow_.sections()[chain_.front().section].begin,
              name_of(chain_.front().section) + " cannot begin a flow; put an input before it");
    }
}

void FlowCheck::check_uses(const Link& link) {
    if (!is_available(link.item)) return;
    for (const Parameter& parameter : link.item.Parameters()) {
        if (parameter.field.applies && !parameter.field.applies()) continue;
        if (const auto* text = std::get_if<Bound<std::string>>(&parameter.value)) {
            check_use(link, parameter, *text->variable);
        }
    }
    if (const std::string refusal = link.item.RefuseParameters(); !refusal.empty()) {
        error(flow_.sections()[link.section].begin, name_of(link.section) + ": " + refusal);
    }
}

// The line that gives the section's parameter its value; the keyword line when it has its default.
std::size_t FlowCheck::line_of(std::size_t section, const std::string& key) const {
    const FlowText::Section& at = flow_.sections()[section];
    for (std::size_t i = at.end; i-- > at.begin + 1;) {
        if (flow_.lines()[i].starts_with(key + "=")) return i;
    }
    return at.begin;
}

void FlowCheck::check_use(const Link& link, const Parameter& parameter, const std::string& value) {
    const std::size_t line = line_of(link.section, parameter.key);
    const std::string key = parameter.key;
    switch (parameter.field.kind) {
        case FieldKind::kInputFile:
            if (is_none(value)) {
                error(line, key + ": no file has been chosen");
            } else if (std::error_code failed; !fs::exists(value, failed)) {
                error(line, key + ": the file " + in_quotes(value) + " does not exist");
            } else if (!InputFile::open(value)) {
                error(line, key + ": " + in_quotes(value) + " is no file that can be read");
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
            error(line, key + ": the header description has no word " + in_quotes(value) +
                            (near.empty() ? "" : "; did you mean " + near + "?"));
            break;
        }
        case FieldKind::kTapeDevice: {
            if (!find_tape_device(value)) {
                warning(line,
                        key + ": " + in_quotes(value) + " is no tape device of the configuration");
            }
            break;
        }
        case FieldKind::kEntry:
            break;
    }
}

void FlowCheck::check_output(const Link& link, std::size_t line, const std::string& path) {
    const auto* disk = dynamic_cast<const DiskOutputFlowItem*>(&link.item);
    if (disk && disk->OverwritesInput()) return;  // the entry is not used
    if (is_none(path)) return error(line, "no output file has been chosen");
    std::error_code failed;
    const fs::path folder = fs::absolute(path, failed).parent_path();
    if (!fs::is_directory(folder, failed)) {
        return error(line, "the directory " + in_quotes(folder.string()) + " does not exist");
    }
    if (fs::is_directory(path, failed)) return error(line, in_quotes(path) + " is a directory");
    const char* input = link.item.GetInputName();
    if (input && fs::equivalent(path, input, failed)) {
        error(line, "the output file " + in_quotes(path) + " is the input file");
    }
    const std::string whole = fs::weakly_canonical(fs::absolute(path, failed), failed).string();
    const auto [earlier, is_new] = outputs_.emplace(whole, line);
    if (!is_new) {
        error(line, "the file " + in_quotes(path) + " is written by line " +
                        std::to_string(earlier->second + 1) + " as well");
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
        const CapturedLog log;
        TraceHeaderDefinition description;
        if (description.load(path) == 0) entry->second = std::move(description);
    }
    return entry->second ? &*entry->second : nullptr;
}

}  // namespace

std::vector<Finding> check_flow(const FlowText& flow) { return FlowCheck(flow).run(); }

}  // namespace halvern
