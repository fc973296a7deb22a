#pragma once

#include <zaltag/base/ZALExport.h>

#include <stdexcept>

/// Thrown when a host or a subclass breaks a rule of the interface: an abstract operation is reached, or a
/// factory is called by a class that must not. Never thrown because of a file. what() is the text that names
/// the operation.
class ZALTAG_EXPORT ZALProgrammingError : public std::logic_error {
  public:
    using std::logic_error::logic_error;
    ~ZALProgrammingError() override;
};
