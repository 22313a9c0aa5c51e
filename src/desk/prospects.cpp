#include "desk/prospects.h"

#include <algorithm>
#include <filesystem>

#include "desk/command_error.h"
#include "desk/workplace.h"
#include "foundation/global_config.h"
#include "foundation/scratch.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "platform/create_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

fs::path whole_path(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? fs::path(path) : whole;
}

bool lies_in(const fs::path& inner, const fs::path& outer) {
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first ==
           outer.end();
}

std::string own_directory(const std::string& data_directory, const std::string& name) {
    return TreePath(data_directory, name);
}

// Why a prospect's own directory is not its alone; an empty text when it is.
std::string shared_with(const std::string& own, const std::string& name) {
    const fs::path directory = whole_path(own);
    if (lies_in(whole_path(SystemDirectory()), directory)) return "it holds the system directory";
    if (lies_in(whole_path(CurrentConfig().scratch_directory()), directory)) {
        return "it holds the scratch directory";
    }
    for (const std::string& other : prospect_names()) {
        if (other == name) continue;
        const Prospect prospect = read_prospect(other);
        for (const std::string& data : prospect.data_directories()) {
            if (lies_in(whole_path(own_directory(data, other)), directory)) {
                return "prospect '" + other + "' has data in it";
            }
        }
    }
    return {};
}

void count_files(const std::string& directory, ProspectRemoval& removal) {
    std::error_code error;
    if (fs::is_symlink(directory, error)) {  // the link goes, what it leads to stays
        ++removal.files;
        return;
    }
    fs::recursive_directory_iterator entry(directory, fs::directory_options::skip_permission_denied,
                                           error);
    for (; !error && entry != fs::recursive_directory_iterator{}; entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_directory(unknown) && !entry->is_symlink(unknown)) continue;
        ++removal.files;
        const auto size = entry->is_symlink(unknown) ? 0 : entry->file_size(unknown);
        if (!unknown) removal.bytes += static_cast<std::int64_t>(size);
    }
}

}  // namespace

std::vector<std::string> prospect_names() {
    std::vector<std::string> names = file_names(TreePath(SystemDirectory(), "Prospects"));
    std::erase_if(names, [](const std::string& name) { return !Prospect::is_name(name); });
    return names;
}

Prospect read_prospect(const std::string& name) {
    Prospect prospect;
    // The tree does not tell capitals from small letters; the file says how the prospect is called.
    const fs::path file = Prospect::file_path(name);
    if (prospect.open(Prospect::is_name(name) ? file.filename().string() : name) == 0) {
        return prospect;
    }
    std::error_code ignored;
    if (Prospect::is_name(name) && fs::exists(file, ignored)) {
        throw CommandError("cannot read the prospect file '" + file.string() +
                           "'; check its permissions");
    }
    const std::string near = nearest(name, prospect_names());
    throw CommandError("there is no prospect '" + name +
                       (near.empty() ? "'; " : "'; did you mean " + near + "? ") +
                       "'halvern prospect list' names those there are");
}

Prospect create_prospect(const std::string& name, const std::vector<std::string>& directories) {
    if (!is_usable_name(name)) {
        throw CommandError("'" + name + "' cannot name a prospect; use letters and digits");
    }
    std::error_code error;
    std::vector<std::string> whole;
    for (const std::string& directory : directories) {
        if (!fs::is_directory(directory, error)) {
            throw CommandError("the data directory '" + directory +
                               "' does not exist; make it first");
        }
        if (!is_one_line(directory)) {
            throw CommandError("the data directory '" + directory +
                               "' has a name that fits no prospect file; rename it");
        }
        whole.push_back(fs::absolute(directory, error).lexically_normal().string());
    }
    if (whole.empty()) whole.push_back(CurrentConfig().data_directories().front());
    Prospect prospect;
    prospect.assign(name, whole);
    const std::string file = Prospect::file_path(name);
    // Of two commands that make a prospect of one name, one gets it.
    const std::error_code taken = create_exclusively(file);
    if (taken == std::errc::file_exists) {
        throw CommandError("there is a prospect '" + name + "' already; 'halvern prospect use " +
                           name + "' works in it");
    }
    if (prospect.save() != 0) {
        if (!taken) fs::remove(file, error);
        throw CommandError("cannot write '" + file +
                           "'; check disk space and permissions on this directory");
    }
    prospect.create_directories();
    for (const std::string& data : whole) {
        const std::string flows = own_directory(data, name) + "/flow";
        if (fs::is_directory(flows, error)) continue;
        fs::remove(file, error);
        throw CommandError("cannot make the directory '" + flows +
                           "'; check disk space and permissions there");
    }
    return prospect;
}

ProspectRemoval plan_removal(const std::string& asked) {
    const Prospect prospect = read_prospect(asked);
    const std::string& name = prospect.name();
    if (name == "default") {
        throw CommandError("the prospect 'default' is the one that every job starts in; it stays");
    }
    ProspectRemoval removal{.name = name, .file = Prospect::file_path(name)};
    for (const std::string& data : prospect.data_directories()) {
        const std::string own = own_directory(data, name);
        std::error_code error;
        if (!fs::exists(fs::symlink_status(own, error))) continue;
        std::string reason = fs::path(data).is_absolute() ? shared_with(own, name)
                                                          : "its data directory is not absolute";
        if (fs::is_symlink(own, error)) reason = "it is a link";
        if (!reason.empty()) {
            std::string& kept = removal.kept.emplace_back(own);
            kept.append(" (").append(reason).append(")");
            continue;
        }
        removal.directories.push_back(own);
        for (const std::string_view sub : ProspectSubdirectories()) {
            if (sub.find('/') == std::string_view::npos) count_files(TreePath(own, sub), removal);
        }
    }
    return removal;
}

std::vector<std::string> remove_prospect(const ProspectRemoval& removal) {
    std::vector<std::string> left;
    std::error_code error;
    for (const std::string& own : removal.directories) {
        for (const std::string_view sub : ProspectSubdirectories()) {
            const std::string path = TreePath(own, sub);
            if (fs::exists(fs::symlink_status(path, error))) (void)RemoveDirectoryTree(path);
        }
        if (!fs::remove(own, error)) left.push_back(own);
    }
    fs::remove(removal.file, error);
    if (fs::exists(removal.file, error)) left.push_back(removal.file);
    return left;
}

}  // namespace halvern
