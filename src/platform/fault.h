#pragma once

#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace halvern {

/// Whether a call failed, and why: words that can end a sentence, without a full stop ("it is a
/// directory", "No space left on device"). What every call below the flow items that can fail
/// answers. Tests as true when there is a fault.
class [[nodiscard]] Fault {
public:
    Fault() = default;  ///< none: all went well
    explicit Fault(std::string reason, std::error_code code = {})
        : reason_(std::move(reason)), code_(code), failed_(true) {}
    /// The system's own words for `code`; no fault when it is none.
    static Fault of_system(std::error_code code) {
        return code ? Fault(code.message(), code) : Fault();
    }
    /// The same for the calling thread's errno, or `code` where a call keeps it elsewhere.
    static Fault of_errno(int code) {
        return Fault(std::error_code(code, std::generic_category()).message(),
                     {code, std::generic_category()});
    }

    explicit operator bool() const { return failed_; }
    const std::string& reason() const { return reason_; }  ///< empty: there is none
    std::error_code code() const { return code_; }         ///< the system's, where it has one
    /// Nothing of that name exists: the only fault that lets a file count as new.
    bool is_missing() const { return code_ == std::errc::no_such_file_or_directory; }

private:
    std::string reason_;
    std::error_code code_;
    bool failed_ = false;
};

/// What a call made, or why it made nothing. Tests as true when there is a value.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Fault fault) : fault_(std::move(fault)) {}

    explicit operator bool() const { return value_.has_value(); }
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }
    const Fault& fault() const { return fault_; }

private:
    std::optional<T> value_;
    Fault fault_;
};

}  // namespace halvern
