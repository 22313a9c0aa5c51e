#include "numerics/expression.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>

namespace halvern {
namespace {

/// x, y and z, and previous(x).
class Named final : public Expression::Variables {
public:
    std::optional<int> number(std::string_view name,
                              const std::vector<std::string>& arguments) override {
        if (name == "previous" && arguments == std::vector<std::string>{"x"}) return 3;
        if (!arguments.empty() || name.size() != 1 || name[0] < 'x' || name[0] > 'z') return {};
        return name[0] - 'x';
    }
    double value(int number) const override { return values[number]; }
    double values[4] = {3, -4, 0.5, 7};
};

Expression::Value value_of(std::string_view text) {
    Named variables;
    Expression::Mistake mistake;
    const auto compiled = Expression::compile(text, variables, mistake);
    if (!compiled) {
        ADD_FAILURE() << mistake.what << '\n' << mistake.shown(text);
        return {std::nan(""), false};
    }
    return compiled->evaluate(variables);
}

// By the rules of arithmetic, with x = 3, y = -4, z = 0.5 and previous(x) = 7.
TEST(Expressions, GiveWhatArithmeticGives) {
    constexpr std::pair<const char*, double> kCases[] = {
        {"x", 3},
        {" x + y*2 ", -5},
        {"(x+y)*2", -2},
        {"10-4-3", 3},
        {"2^3^2", 512},
        {"-2^2", -4},
        {"2^-1", 0.5},
        {"- -x", 3},
        {"7 % 4", 3},
        {"-7 % 4", -3},
        {"1.5e2/x", 50},
        {"x > y", 1},
        {"x == 3 and y != -4", 0},
        {"not x > 5 or y > 5", 1},
        {"2 and 3", 1},
        {"0 or 0.1", 1},
        {"if(x < y, 1, if(z == 0.5, 2, 3))", 2},
        {"abs(y) + sign(y) + sign(0)", 3},
        {"min(x, y) * max(x, y)", -12},
        {"round(2.5) + round(-2.5)", 1},
        {"floor(-z) + ceil(z)", 0},
        {"sqrt(16) + log10(1000) + log(exp(2))", 9},
        {"sin(90) + cos(180) + sin(360) + cos(90)", 0},
        {"tan(45)", 1},
        {"atan2(1, -1)", 135},
        {"hypot(x, y)", 5},
        {"azimuth(0, 0, 0, 2)", 0},
        {"azimuth(10, 10, 9, 10)", 270},
        {"previous(x) - x", 4},
    };
    for (const auto& [text, expected] : kCases) {
        const Expression::Value value = value_of(text);
        EXPECT_NEAR(value.number, expected, 1e-13) << text;
        EXPECT_FALSE(value.divided_by_zero) << text;
    }
}

TEST(Expressions, TellADivisionByZeroWhereOneIsMade) {
    EXPECT_TRUE(value_of("1 / (x - 3)").divided_by_zero);
    EXPECT_TRUE(value_of("5 % 0").divided_by_zero);
    for (const char* text : {"if(x == 3, 0, 1 / (x - 3))", "x != 3 and 1 / (x - 3) > 1",
                             "x == 3 or 1 / (x - 3) > 1"}) {
        EXPECT_FALSE(value_of(text).divided_by_zero) << text;
    }
}

TEST(Expressions, PointAtWhatIsWrong) {
    const std::string deep(200, '(');
    const struct {
        std::string text;
        const char* what;
        std::size_t position;
    } kCases[] = {
        {"", "ends where a value is due", 0},
        {"x + * 2", "a value is due here", 4},
        {"x + OFFSET", "there is no 'OFFSET'", 4},
        {"previous(y)", "there is no 'previous(y)'", 0},
        {"x = 3", "'=='", 2},
        {"(x + 1", "')' is missing", 6},
        {"x 3", "an operator is due here", 2},
        {"3x", "no number", 1},
        {"min(x)", "further argument", 5},
        {"sin x", "'(' is due", 4},
        {"x and", "ends where a value is due", 5},
        {deep, "too deep", 100},
        {"x $ 2", "an operator is due here", 2},
    };
    for (const auto& [text, what, position] : kCases) {
        Named variables;
        Expression::Mistake mistake;
        EXPECT_FALSE(Expression::compile(text, variables, mistake)) << text;
        EXPECT_THAT(mistake.what, testing::HasSubstr(what)) << text;
        EXPECT_EQ(mistake.position, position) << text;
    }
    EXPECT_EQ((Expression::Mistake{"", 4}).shown("x + * 2"), "x + * 2\n    ^");
}

}  // namespace
}  // namespace halvern
