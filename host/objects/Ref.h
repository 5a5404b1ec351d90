// The owner of one reference to a counted thing of the host.
#pragma once

#include <cstddef>
#include <utility>

namespace host {

// Holds one reference to an Object, String or Array, or nil. Retain(T*) and Release(T*) are found
// beside T.
template <class T>
class Ref {
  public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    Ref(const Ref& other) : pointer_(other.pointer_) { Retain(pointer_); }
    Ref(Ref&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ~Ref() { Release(pointer_); }

    Ref& operator=(Ref other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    // Takes over a reference that the caller owns.
    static Ref Adopt(T* pointer) {
        Ref ref;
        ref.pointer_ = pointer;
        return ref;
    }

    // Takes a reference of its own.
    static Ref Share(T* pointer) {
        Retain(pointer);
        return Adopt(pointer);
    }

    // Gives the reference up to the caller.
    [[nodiscard]] T* Detach() { return std::exchange(pointer_, nullptr); }

    T* get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    T& operator*() const { return *pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) { return a.pointer_ == b.pointer_; }

  private:
    T* pointer_ = nullptr;
};

}  // namespace host
