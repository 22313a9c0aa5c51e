#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern::testing_support {

/// Reloads a bench's header description without one of its words.
inline void forget_word(ItemBenchBase& bench, const std::string& word) {
    const TemporaryFolder folder;
    std::ifstream installed(HALVERN_SOURCE_DIR "/header/default");
    std::string kept;
    for (std::string line; std::getline(installed, line);) {
        if (line.find(" " + word + " ") == std::string::npos) kept += line + "\n";
    }
    ASSERT_EQ(bench.definition().load(folder.write("header", kept)), 0);
    ASSERT_LT(bench.definition().find(word), 0);
}

/// The sheet of an item's window.
inline Rows sheet_of(FlowItem& item) {
    for (const Parameter& parameter : item.Parameters()) {
        if (const auto* rows = std::get_if<Rows>(&parameter.value)) return *rows;
    }
    ADD_FAILURE() << "no sheet";
    return {};
}

/// What the item would write into a flow file.
inline std::string written(FlowItem& item) {
    std::FILE* const stream = std::tmpfile();
    item.WriteParameters(stream);
    std::string text(static_cast<std::size_t>(std::ftell(stream)), '\0');
    std::rewind(stream);
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), stream), text.size());
    std::fclose(stream);
    return text;
}

}  // namespace halvern::testing_support
