// What all transitions share: the parameter of their progress, and when they render nothing.
#pragma once

#include "ofx/effect.h"
#include "ofx/log.h"

namespace OFX {

// The first row of every transition's table; the member is a float.
template <auto Member>
inline constexpr Param transitionProgress = {.name = kOfxImageEffectTransitionParamName,
                                             .field = at<Member>,
                                             .hint = "0 shows the outgoing picture, 1 the incoming one."};

// Base of a transition's processors; V has the progress. sources[0] is "SourceFrom", sources[1] is "SourceTo".
template <class V>
class TransitionProcessor : public EffectProcessor<V> {
public:
    using EffectProcessor<V>::EffectProcessor;

    // Writes nothing where the rows of the three images differ in length.
    void process() override {
        const int length = this->destination->rowLength();
        if (this->sources[0]->rowLength() != length || this->sources[1]->rowLength() != length) {
            return log(LogLevel::Warning, "A transition's images have rows of different lengths: nothing is rendered.");
        }
        EffectProcessor<V>::process();
    }

protected:
    // Calls row(x, y, from, to, destination, count), with four components per pixel as in widenRow.
    template <class T, int N, class Row>
    void mixRows(const RectI& band, Row row) const {
        joinRows<T, N>(band, std::array{this->sources[0], this->sources[1]}, *this->destination, this->abort(),
                       [&](int x, int y, const std::array<const T*, 2>& from, T* to, std::size_t pixels) {
                           row(x, y, from[0], from[1], to, pixels);
                       });
    }
    // At both ends a transition may be one picture, bit for bit: copies that, and answers true.
    template <class T, int N>
    bool copyAtEnds(const RectI& band) const {
        const float progress = this->values.progress;
        if (progress > 0 && progress < 1) return false;
        OFX::copyRows<T, N>(band, *this->sources[progress <= 0 ? 0 : 1], *this->destination, this->abort());
        return true;
    }
};

} // namespace OFX
