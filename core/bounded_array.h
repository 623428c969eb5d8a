// core/bounded_array.h - an array of fixed bounds 0..N-1. An index outside them is error 9.
#pragma once

#include <array>
#include <string>

#include "platform/run_error.h"

namespace velnor {

template <class T, int N> class BoundedArray {
public:
    T& operator[](long long index) { return items_[checked(index)]; }
    const T& operator[](long long index) const { return items_[checked(index)]; }
    static constexpr int size() { return N; }
    void fill(const T& value) { items_.fill(value); }

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    static std::size_t checked(long long index)
    {
        if (index < 0 || index >= N)
            throw RunError(RunErrorNumber::OutOfRange, "Subscript out of range");
        return static_cast<std::size_t>(index);
    }

    std::array<T, N> items_{};
};

}  // namespace velnor
