#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "numerics/expression.h"

namespace halvern {

/// Works header words out from others, by equations that are carried out in their order for every
/// trace. A condition restricts the equations after it, until the next one.
class HeaderMath final : public ProcessFlowItem, private Expression::Variables {
public:
    HeaderMath(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Compiles the rows. Ends the job, pointing at the place, when one of them makes no sense.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

    std::string RefuseParameters() override;

protected:
    /// What looks back at earlier traces depends on their order.
    bool RepeatsItself() const override;

private:
    using Image = std::array<std::byte, kTraceHeaderBytes>;

    /// "WORD = expression", or "WHERE=" and a condition.
    struct Row {
        bool condition = false;
        std::string text;  // behind the key
    };

    /// A row as it is carried out.
    struct Step {
        std::optional<Expression> expression;  // none: an empty condition
        int word = -1;                         // that gets the value; -1: a condition
        std::size_t row = 0;                   // in rows_
        std::int64_t zero_divisions = 0;       // traces
        std::int64_t not_stored = 0;           // likewise
    };

    /// Where a variable's value comes from.
    struct Source {
        enum Kind { kWord, kSamples, kInterval, kTrace, kPrevious, kFirst, kFirstOfRun };
        Kind kind = kWord;
        int word = -1;
        std::size_t run = 0;  // in runs_
        auto operator<=>(const Source&) const = default;
    };

    /// The header, as it arrived, of the first trace since a word changed.
    struct Run {
        int key = -1;
        double value = 0;
        Image first{};
    };

    ParameterList Parameters() override;
    std::string Line(const Row& row) const {
        return (row.condition ? "WHERE=" : "EQUATION=") + row.text;
    }
    bool Compile(std::size_t row, const TraceHeaderDefinition& header);
    void Refuse(const Row& row, const Expression::Mistake& mistake) const;
    void LookBack();

    // What the equations ask while they are compiled and evaluated.
    std::optional<int> number(std::string_view name,
                              const std::vector<std::string>& arguments) override;
    double value(int number) const override;
    double word_of(const Image& image, int word) const;

    std::vector<Row> rows_;

    // Of a run.
    std::vector<Step> steps_;
    std::vector<Source> sources_;
    std::vector<Run> runs_;
    mutable TraceHeaderDefinition* definition_ = nullptr;
    bool looks_back_ = false;
    bool changes_weight_ = false;  // which 16-bit samples are decoded with
    int samples_ = 0;
    double interval_ms_ = 0;
    std::int64_t traces_ = 0;  // so far, the one at hand included
    Image first_{};
    Image previous_{};
    Image arrived_{};
};

}  // namespace halvern
