#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace quil::macos {

/// Holds one reference to a Core Foundation object (an event, an element, an image …), or nothing.
/// Copies hold references of their own.
template <typename T>
class CfRef {
  public:
    CfRef() = default;
    CfRef(const CfRef& other) : object_(other.object_) { retain(); }
    CfRef(CfRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CfRef& operator=(CfRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CfRef() {
        if (object_) CFRelease(object_);
    }

    /// Takes over the reference that a call named Create or Copy has returned; may be null.
    static CfRef adopt(T object) { return CfRef(object); }
    /// Takes a reference of its own to what a call named Get has returned; may be null.
    static CfRef share(T object) {
        CfRef reference(object);
        reference.retain();
        return reference;
    }

    T get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    explicit CfRef(T object) : object_(object) {}
    void retain() {
        if (object_) CFRetain(object_);
    }

    T object_ = nullptr;
};

}  // namespace quil::macos
