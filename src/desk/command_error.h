#pragma once

#include <stdexcept>
#include <string>

namespace halvern {

/// Why a command cannot do what it was asked to, and what to do next: one sentence or two without
/// the last full stop. Thrown by what the commands share; the program prints it behind the
/// command's name and ends with status 1.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& reason) : std::runtime_error(reason) {}
};

}  // namespace halvern
