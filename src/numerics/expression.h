#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// A formula in the variables of somebody who gives them their numbers and values, compiled once
/// and then evaluated without allocation.
///
///     or    and    not    == != < <= > >=    + -    * / %    unary + -    ^
///
/// bind in this order, the last one tightest and to the right: -2^2 is -4, 2^-1 is 0.5. A
/// comparison gives 1 or 0; whatever is not 0 is true. "%" has the sign of the dividend. Functions:
/// abs sign min max round floor ceil sqrt exp log log10 sin cos tan atan2 hypot azimuth if. Angles
/// are in degrees; round(x) is floor(x + 0.5); azimuth(x1,y1,x2,y2) is the direction from the first
/// point to the second, clockwise from north, 0 to 360; if(c,a,b) evaluates only the one it gives,
/// and so do "and" and "or".
class Expression {
public:
    /// What an expression needs of the one whose variables it uses.
    class Variables {
    public:
        virtual ~Variables() = default;
        /// The number of the variable `name`, with the names it is called with, as in
        /// "previous(OFFSET)"; nothing when there is none.
        virtual std::optional<int> number(std::string_view name,
                                          const std::vector<std::string>& arguments) = 0;
        /// Its value now.
        virtual double value(int number) const = 0;
    };

    /// What is wrong with a text, and where: a byte of it, counted from 0.
    struct Mistake {
        std::string what;
        std::size_t position = 0;
        /// The text with a caret under the place: "OFFSET + * 2\n         ^".
        std::string shown(std::string_view text) const;
    };

    /// The compiled text; without a value, `mistake` says why.
    static std::optional<Expression> compile(std::string_view text, Variables& variables,
                                             Mistake& mistake);

    struct Value {
        double number = 0;
        bool divided_by_zero = false;  ///< by "/" or "%"; the number is then of no use
    };
    Value evaluate(const Variables& variables) const;

private:
    friend class ExpressionCompiler;

    enum class Operation : unsigned char {
        kConstant,
        kVariable,
        kAdd,
        kSubtract,
        kMultiply,
        kDivide,
        kRemainder,
        kPower,
        kNegate,
        kNot,
        kTruth,  // 1 for what is not 0
        kEqual,
        kUnequal,
        kLess,
        kLessOrEqual,
        kGreater,
        kGreaterOrEqual,
        kJump,
        kJumpIfFalse,          // takes the top away
        kJumpIfTrueElseDrop,   // or: the top stays when it is true
        kJumpIfFalseElseDrop,  // and: the top stays when it is false
        kAbs,
        kSign,
        kMin,
        kMax,
        kRound,
        kFloor,
        kCeil,
        kSqrt,
        kExp,
        kLog,
        kLog10,
        kSin,
        kCos,
        kTan,
        kAtan2,
        kHypot,
        kAzimuth,
    };
    struct Step {
        Operation operation;
        int target = 0;     // of a jump; number of a variable
        double number = 0;  // of a constant
    };

    static constexpr int kDeepest = 64;  // values waiting at a time

    std::vector<Step> steps_;
};

}  // namespace halvern
