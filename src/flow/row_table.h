#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "flow/flow_item.h"
#include "flow/parameter.h"
#include "platform/fault.h"

namespace halvern {

// Tables of numbers and text as parameters, one flow file line a row: declared as columns, from
// which the lines, the sheet of the window and its checks follow.

/// A value of a row.
using Cell = std::variant<double, int, std::string>;

/// What a column is called, and which values one expects in it.
struct TableColumn {
    const char* title;              ///< above the column in the window
    const char* label;              ///< in messages: "Offset"
    const char* unit = "";          ///< "ms"
    const char* heading = nullptr;  ///< above its values in a file; null: the label in capitals
    /// Magnitudes beyond these are doubted, not refused; zero never is.
    double least = 0;
    double most = std::numeric_limits<double>::infinity();
};

/// What is said about a whole table. Columns count from 0 in the file's order.
struct TableWords {
    const char* key;                   ///< of its flow file lines
    const char* entry;                 ///< what a row is, in messages of the window: "Offset/Time"
    const char* row;                   ///< and in those about a line: "offset/time pair"
    std::vector<std::size_t> window;   ///< the columns from left to right
    std::vector<std::size_t> quoted;   ///< in the order in which the window's messages quote them
    std::vector<std::size_t> checked;  ///< and in which it checks them
};

/// The table without the type of its rows. A line holds the values in the columns' order, commas
/// between them; what follows the last number is ignored, a text in the last place runs to the end
/// of the line.
class CellTable {
public:
    using Row = std::vector<Cell>;
    using Sheet = std::vector<std::vector<std::string>>;

    /// The values of a line. False for a number that is missing, none, or beyond an int in a column
    /// of whole numbers; a line of fewer columns.
    bool parse(std::string_view line, Row& row) const;
    static std::string line_of(const Row& row);
    /// What makes one suspect that the values of a line are in another order or unit than the
    /// file's; empty: nothing.
    std::string doubt(std::string_view line) const;
    /// What one types: "<offset>,<time, ms>".
    std::string line_form() const;
    std::vector<const char*> titles() const;
    std::vector<std::string> sheet_row(const Row& row) const;
    /// The rows of a sheet; those that are empty throughout are left out. Gives what is wrong with
    /// the first row at fault, or an empty text.
    std::string read_sheet(const Sheet& sheet, std::vector<Row>& rows) const;
    /// The rows of a text file: lines as in a flow file, with or without their key, or, after a
    /// line of headings, values in the order of these, with blanks, tabs or commas between them; a
    /// column that has no heading there holds 0 or nothing. Empty lines and those that begin with
    /// "#" are passed over. A fault names the line that is no row.
    Fault read_file(const std::string& path, std::vector<Row>& rows) const;

protected:
    CellTable(TableWords words, Row kinds, std::vector<TableColumn> columns)
        : words_(std::move(words)), kinds_(std::move(kinds)), columns_(std::move(columns)) {}

    TableWords words_;

private:
    /// The column of each value of a line after the line of headings; empty: it is none.
    std::vector<std::size_t> read_headings(std::string_view line) const;
    bool read_values(std::string_view line, std::span<const std::size_t> order, Row& row) const;

    Row kinds_;  // a value of each column's type
    std::vector<TableColumn> columns_;
};

/// A table whose rows are a struct: each column is one of its members, a double, an int or a text.
/// Declared once a kind, as a static object.
template <class Struct>
class RowTable : public CellTable {
public:
    using Member = std::variant<double Struct::*, int Struct::*, std::string Struct::*>;
    struct Column {
        TableColumn words;
        Member member;
    };

    RowTable(TableWords words, std::initializer_list<Column> columns)
        : CellTable(std::move(words), kinds_of(columns), words_of(columns)) {
        for (const Column& column : columns) {
            std::visit([this]<class T>(T Struct::*member) { this->add_member(member); },
                       column.member);
        }
    }

    /// The parameter: its rows are kept in `list`, and lines that are no row are told `report`, or
    /// kept in `malformed` by an item that cannot do without any of them. All of these outlive it.
    Parameter parameter(std::vector<Struct>& list, const Reporter& report, Field field,
                        std::vector<std::string>* malformed = nullptr) const {
        Rows rows;
        rows.clear = [&list, malformed] {
            list.clear();
            if (malformed) malformed->clear();
        };
        rows.read = [this, &list, &report, malformed](const char* rest) {
            Row row;
            if (parse(rest, row)) {
                list.push_back(to_struct(row));
                return true;
            }
            if (malformed) {
                malformed->emplace_back(std::string(words_.key) + "=" + rest);
                return false;
            }
            report.Warning("The line '%s=%s' is no %s.  It is left out.\n", words_.key, rest,
                           words_.row);
            return false;
        };
        rows.lines = [this, &list](const std::string& key) {
            std::vector<std::string> lines;
            for (const Struct& row : list) lines.push_back(key + "=" + line_of(to_row(row)));
            return lines;
        };
        rows.columns = titles();
        rows.cells = [this, &list] {
            Sheet sheet;
            for (const Struct& row : list) sheet.push_back(sheet_row(to_row(row)));
            return sheet;
        };
        rows.assign = [this, &list, malformed](const Sheet& sheet) {
            std::vector<Row> read;
            std::string wrong = read_sheet(sheet, read);
            if (!wrong.empty()) return wrong;
            list.clear();
            if (malformed) malformed->clear();
            for (const Row& row : read) list.push_back(to_struct(row));
            return wrong;
        };
        rows.line_form = line_form();
        rows.doubt = [this](const std::string& rest) { return doubt(rest); };
        return {
            .key = words_.key, .format = "", .value = std::move(rows), .field = std::move(field)};
    }

    /// The rows that a run uses: those typed, or those of `file`, where that is not "NONE". Ends
    /// the job, and gives false, when there are both or the file cannot be read.
    bool find_rows(const FlowItem& item, const std::vector<Struct>& typed, const std::string& file,
                   std::vector<Struct>& rows) const {
        rows = typed;
        if (file == "NONE") return true;
        std::vector<Row> read;
        const Fault fault = typed.empty() ? read_file(file, read) : Fault();
        if (!typed.empty()) {
            item.Error("Both a table and the table file '%s' are given.  Remove one of them.\n",
                       file.c_str());
        } else if (fault) {
            item.Error("Cannot read the table file '%s': %s.\n", file.c_str(),
                       fault.reason().c_str());
        } else {
            for (const Row& row : read) rows.push_back(to_struct(row));
            item.Message("Rows of the table file = %d\n", static_cast<int>(rows.size()));
            return true;
        }
        TerminateJob(kJobError);
        return false;
    }

private:
    static Row kinds_of(std::initializer_list<Column> columns) {
        Row kinds;
        for (const Column& column : columns) {
            std::visit([&]<class T>(T Struct::*) { kinds.emplace_back(T{}); }, column.member);
        }
        return kinds;
    }
    static std::vector<TableColumn> words_of(std::initializer_list<Column> columns) {
        std::vector<TableColumn> words;
        for (const Column& column : columns) words.push_back(column.words);
        return words;
    }

    // One function a member in each direction: what is made for one type never sees the others.
    template <class T>
    void add_member(T Struct::*member) {
        members_.push_back(
            {[member](Struct& to, const Cell& cell) { to.*member = std::get<T>(cell); },
             [member](const Struct& from) { return Cell(from.*member); }});
    }
    struct Access {
        std::function<void(Struct& to, const Cell& cell)> set;
        std::function<Cell(const Struct& from)> get;
    };

    Struct to_struct(const Row& row) const {
        Struct made{};
        for (std::size_t i = 0; i < members_.size(); ++i) members_[i].set(made, row[i]);
        return made;
    }
    Row to_row(const Struct& from) const {
        Row row;
        for (const Access& member : members_) row.push_back(member.get(from));
        return row;
    }

    std::vector<Access> members_;
};

}  // namespace halvern
