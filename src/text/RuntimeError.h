#pragma once

#include <stdexcept>
#include <string>

namespace corvane {

/// An error with the number and the words that the operator's log shows. Thrown by value; what() is the description.
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(int number, const std::string& description) : std::runtime_error(description), number_(number) {}

    int number() const { return number_; }
    std::string description() const { return what(); }

    static RuntimeError overflow() { return {6, "Overflow"}; }
    static RuntimeError subscriptOutOfRange() { return {9, "Subscript out of range"}; }
    static RuntimeError typeMismatch() { return {13, "Type mismatch"}; }
    static RuntimeError fileNotFound() { return {53, "File not found"}; }

private:
    int number_;
};

}  // namespace corvane
