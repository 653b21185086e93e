#pragma once

#include <exception>

#include "core/shared_ptr.h"
#include "core/string.h"

namespace ovix {

/// The one exception of the core library, thrown by value.
class OVIX_API CException : public std::exception {
  public:
    explicit CException(const CString& message, const CException* inner = nullptr);
    CException(const CException&);
    CException& operator=(const CException&);
    ~CException() override;

    /// The message in UTF-8, valid as long as this is.
    const char* what() const noexcept override;

    const CString& GetMessage() const { return message_; }
    /// Null when there is none.
    const CException* GetInner() const { return inner_.ptr(); }

  private:
    CString message_;
    TSharedPtr<CException> inner_;
};

/// Raises `CException` with "Index out of bounds."
[[noreturn]] OVIX_API void ThrowIndexOutOfBounds();

}  // namespace ovix
