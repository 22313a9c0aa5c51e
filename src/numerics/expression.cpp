#include "numerics/expression.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <numbers>

namespace halvern {

namespace {

constexpr double kDegree = std::numbers::pi / 180;

// Sine and cosine that are exact where people know them: at whole multiples of a right angle.
double sine_of_degrees(double degrees) {
    const double turned = std::remainder(degrees, 360.0);
    if (std::fabs(turned) == 180 || turned == 0) return 0;
    if (std::fabs(turned) == 90) return std::copysign(1.0, turned);
    return std::sin(turned * kDegree);
}
double cosine_of_degrees(double degrees) {
    return sine_of_degrees(std::remainder(degrees, 360.0) + 90);
}
double tangent_of_degrees(double degrees) {
    return sine_of_degrees(degrees) / cosine_of_degrees(degrees);
}

double azimuth(double east, double north) {
    const double degrees = std::atan2(east, north) / kDegree;
    return degrees < 0 ? degrees + 360 : degrees;
}

bool begins_name(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool continues_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

}  // namespace

/// Reads a text by recursive descent, one function a level of binding, and writes the steps.
class ExpressionCompiler {
public:
    ExpressionCompiler(std::string_view text, Expression::Variables& variables,
                       Expression::Mistake& mistake)
        : text_(text), variables_(variables), mistake_(mistake) {}

    std::optional<Expression> compile() {
        if (!either()) return std::nullopt;
        skip_blanks();
        if (at_ < text_.size()) {
            fail(text_[at_] == '=' ? "a comparison is written '=='" : "an operator is due here");
            return std::nullopt;
        }
        return std::move(expression_);
    }

private:
    using Operation = Expression::Operation;

    struct Function {
        const char* name;
        Operation operation;
        int arguments;
    };
    static constexpr Function kFunctions[] = {
        {"abs", Operation::kAbs, 1},        {"sign", Operation::kSign, 1},
        {"min", Operation::kMin, 2},        {"max", Operation::kMax, 2},
        {"round", Operation::kRound, 1},    {"floor", Operation::kFloor, 1},
        {"ceil", Operation::kCeil, 1},      {"sqrt", Operation::kSqrt, 1},
        {"exp", Operation::kExp, 1},        {"log", Operation::kLog, 1},
        {"log10", Operation::kLog10, 1},    {"sin", Operation::kSin, 1},
        {"cos", Operation::kCos, 1},        {"tan", Operation::kTan, 1},
        {"atan2", Operation::kAtan2, 2},    {"hypot", Operation::kHypot, 2},
        {"azimuth", Operation::kAzimuth, 4}};

    static constexpr int kDeepestNesting = 100;  // of the text, so that no text exhausts the stack

    bool fail(std::string what) { return fail(std::move(what), at_); }
    bool fail(std::string what, std::size_t position) {
        mistake_ = {std::move(what), position};
        return false;
    }

    void skip_blanks() {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
    }
    bool take(std::string_view sign) {
        skip_blanks();
        if (!text_.substr(at_).starts_with(sign)) return false;
        at_ += sign.size();
        return true;
    }
    std::string_view peek_name() {
        skip_blanks();
        std::size_t end = at_;
        if (end < text_.size() && begins_name(text_[end])) {
            while (end < text_.size() && continues_name(text_[end])) ++end;
        }
        return text_.substr(at_, end - at_);
    }
    bool take_word(std::string_view word) {
        if (peek_name() != word) return false;
        at_ += word.size();
        return true;
    }

    // Every step changes how many values wait by `change`.
    bool emit(Operation operation, int change, int target = 0, double number = 0) {
        expression_.steps_.push_back({operation, target, number});
        waiting_ += change;
        if (waiting_ <= Expression::kDeepest) return true;
        return fail("the formula is too deep; divide it");
    }
    int place() const { return static_cast<int>(expression_.steps_.size()); }
    void land(int jump) { expression_.steps_[static_cast<std::size_t>(jump)].target = place(); }

    // Two operands of which the second is not always evaluated.
    bool shortcut(Operation jump, bool (ExpressionCompiler::*operand)()) {
        const int from = place();
        if (!emit(jump, -1) || !(this->*operand)() || !emit(Operation::kTruth, 0)) return false;
        land(from);
        return true;
    }

    bool either() {
        if (++nesting_ > kDeepestNesting) return fail("the formula is too deep; divide it");
        if (!both()) return false;
        while (take_word("or")) {
            if (!emit(Operation::kTruth, 0) ||
                !shortcut(Operation::kJumpIfTrueElseDrop, &ExpressionCompiler::both)) {
                return false;
            }
        }
        --nesting_;
        return true;
    }
    bool both() {
        if (!negation()) return false;
        while (take_word("and")) {
            if (!emit(Operation::kTruth, 0) ||
                !shortcut(Operation::kJumpIfFalseElseDrop, &ExpressionCompiler::negation)) {
                return false;
            }
        }
        return true;
    }
    bool negation() {
        if (!take_word("not")) return comparison();
        if (++nesting_ > kDeepestNesting) return fail("the formula is too deep; divide it");
        if (!negation()) return false;
        --nesting_;
        return emit(Operation::kNot, 0);
    }
    bool comparison() {
        constexpr std::pair<std::string_view, Operation> kComparisons[] = {
            {"==", Operation::kEqual},       {"!=", Operation::kUnequal},
            {"<=", Operation::kLessOrEqual}, {">=", Operation::kGreaterOrEqual},
            {"<", Operation::kLess},         {">", Operation::kGreater}};
        if (!sum()) return false;
        for (const auto& [sign, operation] : kComparisons) {
            if (take(sign)) return sum() && emit(operation, -1);
        }
        return true;
    }
    bool sum() {
        if (!product()) return false;
        for (;;) {
            if (take("+")) {
                if (!product() || !emit(Operation::kAdd, -1)) return false;
            } else if (take("-")) {
                if (!product() || !emit(Operation::kSubtract, -1)) return false;
            } else {
                return true;
            }
        }
    }
    bool product() {
        if (!signed_power()) return false;
        for (;;) {
            Operation operation{};
            if (take("*")) {
                operation = Operation::kMultiply;
            } else if (take("/")) {
                operation = Operation::kDivide;
            } else if (take("%")) {
                operation = Operation::kRemainder;
            } else {
                return true;
            }
            if (!signed_power() || !emit(operation, -1)) return false;
        }
    }
    bool signed_power() {
        if (take("+")) return deeper(&ExpressionCompiler::signed_power);
        if (take("-")) {
            return deeper(&ExpressionCompiler::signed_power) && emit(Operation::kNegate, 0);
        }
        if (!primary()) return false;
        if (!take("^")) return true;
        return deeper(&ExpressionCompiler::signed_power) && emit(Operation::kPower, -1);
    }
    bool deeper(bool (ExpressionCompiler::*level)()) {
        if (++nesting_ > kDeepestNesting) return fail("the formula is too deep; divide it");
        if (!(this->*level)()) return false;
        --nesting_;
        return true;
    }

    bool primary() {
        skip_blanks();
        if (at_ == text_.size()) return fail("the formula ends where a value is due");
        if (take("(")) return either() && close();
        const char c = text_[at_];
        if (std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.') return number();
        const std::string_view name = peek_name();
        if (name.empty()) return fail("a value is due here");
        if (name == "and" || name == "or" || name == "not") return fail("a value is due here");
        const std::size_t begin = at_;
        at_ += name.size();
        if (name == "if") return condition();
        const auto function = std::ranges::find(kFunctions, name, &Function::name);
        if (function != std::end(kFunctions)) return call(*function);
        return variable(name, begin);
    }
    bool close() { return take(")") || fail("a ')' is missing"); }
    bool comma() { return take(",") || fail("a ',' and a further argument are due here"); }

    bool number() {
        double value = 0;
        const char* const end = text_.data() + text_.size();
        const auto [behind, error] = std::from_chars(text_.data() + at_, end, value);
        if (error != std::errc{}) return fail("this is no number");
        const auto length = static_cast<std::size_t>(behind - (text_.data() + at_));
        if (behind < end && continues_name(*behind)) return fail("this is no number", at_ + length);
        at_ += length;
        return emit(Operation::kConstant, 1, 0, value);
    }
    bool condition() {
        if (!take("(")) return fail("if is written if(condition, value, other value)");
        if (!either() || !comma()) return false;
        const int to_other = place();
        if (!emit(Operation::kJumpIfFalse, -1) || !either() || !comma()) return false;
        const int to_end = place();
        if (!emit(Operation::kJump, -1)) return false;
        land(to_other);
        if (!either()) return false;
        land(to_end);
        return close();
    }
    bool call(const Function& function) {
        if (!take("("))
            return fail(std::string(function.name) + " is a function: a '(' is due here");
        for (int i = 0; i < function.arguments; ++i) {
            if (i > 0 && !comma()) return false;
            if (!either()) return false;
        }
        return close() && emit(function.operation, 1 - function.arguments);
    }
    bool variable(std::string_view name, std::size_t begin) {
        std::vector<std::string> arguments;
        if (take("(")) {
            do {
                const std::string_view argument = peek_name();
                if (argument.empty()) return fail("the name of a header word is due here");
                arguments.emplace_back(argument);
                at_ += argument.size();
            } while (take(","));
            if (!close()) return false;
        }
        const std::optional<int> number = variables_.number(name, arguments);
        if (number) return emit(Operation::kVariable, 1, *number);
        std::string what = "there is no '" + std::string(name);
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            what += (i == 0 ? "(" : ", ") + arguments[i];
        }
        return fail(what + (arguments.empty() ? "'" : ")'"), begin);
    }

    const std::string_view text_;
    Expression::Variables& variables_;
    Expression::Mistake& mistake_;
    Expression expression_;
    std::size_t at_ = 0;
    int waiting_ = 0;
    int nesting_ = 0;
};

std::string Expression::Mistake::shown(std::string_view text) const {
    return std::string(text) + "\n" + std::string(position, ' ') + "^";
}

std::optional<Expression> Expression::compile(std::string_view text, Variables& variables,
                                              Mistake& mistake) {
    return ExpressionCompiler(text, variables, mistake).compile();
}

Expression::Value Expression::evaluate(const Variables& variables) const {
    double stack[1 + kDeepest];
    double* top = stack;  // where the last value waits; the first place stays empty
    bool divided_by_zero = false;
    const int end = static_cast<int>(steps_.size());
    const auto binary = [&top](double result) { *--top = result; };
    for (int at = 0; at < end; ++at) {
        const Step& step = steps_[static_cast<std::size_t>(at)];
        switch (step.operation) {
            case Operation::kConstant:
                *++top = step.number;
                break;
            case Operation::kVariable:
                *++top = variables.value(step.target);
                break;
            case Operation::kAdd:
                binary(top[-1] + *top);
                break;
            case Operation::kSubtract:
                binary(top[-1] - *top);
                break;
            case Operation::kMultiply:
                binary(top[-1] * *top);
                break;
            case Operation::kDivide:
                divided_by_zero |= *top == 0;
                binary(*top == 0 ? 0 : top[-1] / *top);
                break;
            case Operation::kRemainder:
                divided_by_zero |= *top == 0;
                binary(*top == 0 ? 0 : std::fmod(top[-1], *top));
                break;
            case Operation::kPower:
                binary(std::pow(top[-1], *top));
                break;
            case Operation::kNegate:
                *top = -*top;
                break;
            case Operation::kNot:
                *top = *top == 0 ? 1 : 0;
                break;
            case Operation::kTruth:
                *top = *top != 0 ? 1 : 0;
                break;
            case Operation::kEqual:
                binary(top[-1] == *top ? 1 : 0);
                break;
            case Operation::kUnequal:
                binary(top[-1] != *top ? 1 : 0);
                break;
            case Operation::kLess:
                binary(top[-1] < *top ? 1 : 0);
                break;
            case Operation::kLessOrEqual:
                binary(top[-1] <= *top ? 1 : 0);
                break;
            case Operation::kGreater:
                binary(top[-1] > *top ? 1 : 0);
                break;
            case Operation::kGreaterOrEqual:
                binary(top[-1] >= *top ? 1 : 0);
                break;
            case Operation::kJump:
                at = step.target - 1;
                break;
            case Operation::kJumpIfFalse:
                if (*top-- == 0) at = step.target - 1;
                break;
            case Operation::kJumpIfTrueElseDrop:
                if (*top != 0) {
                    at = step.target - 1;
                } else {
                    --top;
                }
                break;
            case Operation::kJumpIfFalseElseDrop:
                if (*top == 0) {
                    at = step.target - 1;
                } else {
                    --top;
                }
                break;
            case Operation::kAbs:
                *top = std::fabs(*top);
                break;
            case Operation::kSign:
                *top = *top > 0 ? 1 : *top < 0 ? -1 : 0;
                break;
            case Operation::kMin:
                binary(std::min(top[-1], *top));
                break;
            case Operation::kMax:
                binary(std::max(top[-1], *top));
                break;
            case Operation::kRound:
                *top = std::floor(*top + 0.5);
                break;
            case Operation::kFloor:
                *top = std::floor(*top);
                break;
            case Operation::kCeil:
                *top = std::ceil(*top);
                break;
            case Operation::kSqrt:
                *top = std::sqrt(*top);
                break;
            case Operation::kExp:
                *top = std::exp(*top);
                break;
            case Operation::kLog:
                *top = std::log(*top);
                break;
            case Operation::kLog10:
                *top = std::log10(*top);
                break;
            case Operation::kSin:
                *top = sine_of_degrees(*top);
                break;
            case Operation::kCos:
                *top = cosine_of_degrees(*top);
                break;
            case Operation::kTan:
                *top = tangent_of_degrees(*top);
                break;
            case Operation::kAtan2:
                binary(std::atan2(top[-1], *top) / kDegree);
                break;
            case Operation::kHypot:
                binary(std::hypot(top[-1], *top));
                break;
            case Operation::kAzimuth:
                top -= 3;
                *top = azimuth(top[2] - top[0], top[3] - top[1]);
                break;
        }
    }
    return {*top, divided_by_zero};
}

}  // namespace halvern
