#include "core/exception.h"

namespace ovix {

CException::CException(const CString& message, const CException* inner)
    : message_(message), inner_(inner ? MakeShared<CException>(*inner) : TSharedPtr<CException>()) {}
CException::CException(const CException&) = default;
CException& CException::operator=(const CException&) = default;
CException::~CException() = default;

const char* CException::what() const noexcept {
    try {
        return message_.GetUTF8();
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
}

void ThrowIndexOutOfBounds() { throw CException(L"Index out of bounds."); }

}  // namespace ovix
