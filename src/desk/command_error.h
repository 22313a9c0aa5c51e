#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/fault.h"

namespace halvern {

/// Why a command cannot do what it was asked to, and what to do next: one sentence or two without
/// the last full stop. Thrown by what the commands share; the program prints it after the command's
/// name and ends with status 1.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& reason) : std::runtime_error(reason) {}
};

/// The value; a fault ends the command in its own words.
template <class T>
T required(Result<T> result) {
    if (!result) throw CommandError(result.fault().reason());
    return std::move(*result);
}

}  // namespace halvern
