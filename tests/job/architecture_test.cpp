#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using Rooms = std::map<std::string, std::set<std::string>>;

// "room: used used ..." a line, as the build lists them, closed over what is used in turn.
Rooms declared_rooms() {
    Rooms rooms;
    std::ifstream file(HALVERN_ROOMS_FILE);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string room, used;
        std::getline(words, room, ':');
        auto& uses = rooms[room];
        while (words >> used) {
            uses.insert(used);
            uses.insert(rooms[used].begin(), rooms[used].end());
        }
    }
    return rooms;
}

TEST(Architecture, EveryIncludeGoesToARoomThatIsDeclaredToBeUsed) {
    const Rooms rooms = declared_rooms();
    ASSERT_GE(rooms.size(), 6u);
    const std::regex include("^\\s*#\\s*include\\s*\"([a-z_0-9]+)/[^\"]*\"");
    int includes = 0;
    for (const auto& entry : fs::recursive_directory_iterator(HALVERN_SOURCE_DIR "/src")) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp") continue;
        const fs::path relative = fs::relative(entry.path(), HALVERN_SOURCE_DIR "/src");
        const std::string room = relative.begin()->string();
        ASSERT_TRUE(rooms.count(room)) << room << " is not declared";
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (!std::regex_search(line, match, include) || match[1] == room) continue;
            ++includes;
            EXPECT_TRUE(rooms.at(room).count(match[1])) << relative << " includes from " << match[1]
                                                        << ", which " << room << " does not use";
        }
    }
    EXPECT_GT(includes, 50);
}

}  // namespace
