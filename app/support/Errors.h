// The errors that the program raises itself. Each knows the name under which the error log lists
// it.
#pragma once

#include <stdexcept>
#include <string>

namespace dbkeeper {

class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& message) : std::runtime_error(message) {}
  virtual const char* ClassName() const { return "Error"; }
  // What the error log says of it.
  virtual std::string LogText() const { return what(); }
};

// A file could not be read or written.
class FileError : public Error {
 public:
  using Error::Error;
  const char* ClassName() const override { return "FileError"; }
};

// A text is no number or date, or does not fit its place.
class ConvertError : public Error {
 public:
  using Error::Error;
  const char* ClassName() const override { return "ConvertError"; }
};

// A session operation was called in a state that does not allow it, such as a query without a
// connection, or a field that the result does not have.
class SessionError : public Error {
 public:
  using Error::Error;
  const char* ClassName() const override { return "SessionError"; }
};

}  // namespace dbkeeper
