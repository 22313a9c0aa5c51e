#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace halvern {

/// A table for a terminal, in columns, or as comma-separated values for another program. Rows are
/// printed as they come but for the first ones, which are kept to see how wide columns must be.
class StreamTable {
public:
    struct Column {
        std::string title;
        bool text = false;  ///< left-aligned; numbers are right-aligned
    };

    StreamTable(std::FILE* out, bool csv, std::vector<Column> columns);
    ~StreamTable() { flush(); }
    StreamTable(const StreamTable&) = delete;
    StreamTable& operator=(const StreamTable&) = delete;

    /// One cell a column.
    void add(std::vector<std::string> cells);

private:
    void flush();
    void print(const std::vector<std::string>& cells) const;

    std::FILE* out_;
    bool csv_;
    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> kept_;  // the titles, and rows not printed yet
    std::vector<std::size_t> widths_;             // empty while rows are kept
};

}  // namespace halvern
