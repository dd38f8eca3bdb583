// The host's one exception, and the skin that keeps exceptions inside the C boundary.
#pragma once
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "openfx/core.h"

namespace host {

// What went wrong, in words for the user, and the status that a suite function answers for it.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& message, OfxStatus status = kOfxStatFailed)
        : std::runtime_error(message), status_(status) {}
    OfxStatus status() const { return status_; }

private:
    OfxStatus status_;
};

// "kOfxStatFailed" and so on; the number for a status that the standard does not name.
std::string statusName(OfxStatus status);

// Runs the body of a suite function: whatever it throws becomes a status. A body without result answers kOfxStatOK.
template <class Body>
OfxStatus guarded(Body&& body) noexcept {
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return kOfxStatOK;
        } else {
            return body();
        }
    } catch (const Error& error) {
        return error.status();
    } catch (const std::bad_alloc&) {
        return kOfxStatErrMemory;
    } catch (...) {
        return kOfxStatFailed;
    }
}

// For suite functions: the object behind a handle, or the end of the call with kOfxStatErrBadHandle.
template <class Object, class CHandle>
Object& require(CHandle handle) {
    if (Object* object = Object::from(handle)) return *object;
    throw Error("not a handle of this host", kOfxStatErrBadHandle);
}

// For suite functions: a pointer or name that must not be null.
template <class Pointer>
Pointer given(Pointer pointer) {
    if (!pointer) throw Error("null argument", kOfxStatErrValue);
    return pointer;
}

} // namespace host
