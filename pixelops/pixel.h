// One pixel with named components, and its place in memory in both channel orders.
#pragma once

namespace pixelops {

template <class T>
struct Pixel {
    T r, g, b, a;
};

// N components at p: four in red- or blue-first order, or alpha alone (the colours then read as 0).
template <int N, int bgra, class T>
Pixel<T> load(const T* p) {
    if constexpr (N == 1) return {T{}, T{}, T{}, p[0]};
    return {p[bgra ? 2 : 0], p[1], p[bgra ? 0 : 2], p[3]};
}

template <int N, int bgra, class T>
void store(T* p, const Pixel<T>& pixel) {
    if constexpr (N == 1) {
        p[0] = pixel.a;
    } else {
        p[bgra ? 2 : 0] = pixel.r, p[1] = pixel.g, p[bgra ? 0 : 2] = pixel.b, p[3] = pixel.a;
    }
}

// Choices that are written alike for one number and for a vector of them.
inline bool any(bool truth) { return truth; }
template <class T>
T select(bool truth, T yes, T no) {
    return truth ? yes : no;
}

// Applies f to the straight colours of a premultiplied pixel. Without alpha nothing is left; at full alpha and
// beyond the colour is taken as it stands, and alpha becomes exactly 1.
template <class T, class F>
Pixel<T> mapStraight(const Pixel<T>& p, F f) {
    const T one = 1.0f;
    const auto translucent = p.a < one;
    if (!any(translucent)) return {f(p.r), f(p.g), f(p.b), one}; // most pictures, and it saves the divisions
    const auto clear = p.a <= T(1e-6f);
    const auto map = [&](const T& c) {
        const T mapped = f(select(translucent, c / p.a, c));
        return select(clear, T(0.0f), select(translucent, mapped * p.a, mapped));
    };
    return {map(p.r), map(p.g), map(p.b), select(clear, T(0.0f), select(translucent, p.a, one))};
}

} // namespace pixelops
