// Chroma keyer: controls, and the stages of a matte.
#include "effects/chromakeyer/chromakeyer.h"

#include <algorithm>
#include <cmath>

#include "kernels.h"
#include "ofx/log.h"

namespace {

using Values = chromakeyerValues;

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    {.name = "color", .label = "Color", .field = OFX::at<&Values::color>, .initial = {24 / 255.0, 71 / 255.0, 241 / 255.0},
     .hint = "The color of the screen behind the subject."},
    {.name = "LowThreshold", .label = "Low threshold", .field = OFX::at<&Values::low>,
     .hint = "Pixels closer to the key color than this become transparent."},
    {.name = "HighThreshold", .label = "High threshold", .field = OFX::at<&Values::high>, .initial = {1},
     .hint = "Pixels farther from the key color than this stay whole."},
    {.name = "BlurAmount", .label = "Blur amount", .field = OFX::at<&Values::blur>,
     .hint = "Softens the matte and takes the key color out of its edges: at 1 over a quarter of the longer side."},
    {.name = "ShowMaskOnly", .label = "Show mask only", .field = OFX::at<&Values::showMatte>,
     .hint = "Shows the matte as an opaque grey picture."},
};
// clang-format on

} // namespace

chromakeyer::Key chromakeyerProcessorBase::key(bool bgra) const {
    const double range = values.high - values.low;
    return {chromakeyer::colorOf(values.color[0], values.color[1], values.color[2]),
            values.low,
            values.high,
            std::abs(range) < 1e-6 ? 0 : 1 / range,
            bgra,
            values.showMatte != 0};
}

int chromakeyerProcessorBase::dominant() const {
    const auto& [r, g, b] = static_cast<const std::array<double, 3>&>(values.color);
    return b > r && b > g ? 2 : g > b && g > r ? 1 : 0;
}

chromakeyerProcessorBase::Sigmas chromakeyerProcessorBase::sigmas() const {
    const OFX::AspectScale scale(destination->pixelAspect());
    const double size = std::max(OFX::width(window) * scale.x, OFX::height(window) * scale.y);
    const double radius = size * values.blur * 0.25 + 1.5;
    return {pixelops::sigmaAtRadius(radius * scale.x), pixelops::sigmaAtRadius(radius * scale.y)};
}

void chromakeyerProcessorBase::repeatEdges() const {
    const int width = OFX::width(area());
    for (int y = area().y1; y < area().y2; ++y) {
        float* row = hardRow(y);
        row[-1] = row[0], row[width] = row[width - 1];
    }
    const auto copy = [&](int from, int to) { std::copy_n(hardRow(from) - 1, width + 2, hardRow(to) - 1); };
    copy(area().y1, area().y1 - 1), copy(area().y2 - 1, area().y2);
}

// --- Processors ---

// A blurred matte is for pictures of one shape only.
void chromakeyerProcessorBase::process() {
    if (blurs() && sources[0]->rowLength() != destination->rowLength()) {
        return log(OFX::LogLevel::Warning, "Source and output have rows of different lengths: nothing is rendered.");
    }
    EffectProcessor::process();
}

// The blurred matte in stages: the hard one, refined at its edges, then blurred.
template <class T, int N, int max, int bgra>
void chromakeyerProcessor<T, N, max, bgra>::preProcess() {
    const OFX::RectI area = this->area();
    if (N == 1 || !blurs() || OFX::empty(area)) return;
    const int width = OFX::width(area), height = OFX::height(area);
    hard_.emplace(effect_, width + 2, height + 2, 1);
    soft_.emplace(effect_, width, height, 1);
    edges_.emplace(effect_, (width + 3) / 4, height, 1);
    const chromakeyer::Key key = this->key(bgra != 0);
    OFX::stageRows(area, [&](const OFX::RectI& rows) {
        OFX::readRows<T, N>(rows, *sources[0], abort(), [&](int x, int y, const T* pixels, std::size_t count) {
            float* matte = hardRow(y) + (x - area.x1);
            simd::forType<T>(chromakeyer::matteByteRow, chromakeyer::matteFloatRow)(key, pixels, matte, count);
        });
    });
    repeatEdges();
    OFX::stageRows(area, [&](const OFX::RectI& rows) {
        for (int y = rows.y1; y < rows.y2 && !aborted(); ++y)
            chromakeyer::refineRow({hardRow(y + 1), hardRow(y), hardRow(y - 1)}, softRow(y), edgesRow(y),
                                   static_cast<std::size_t>(width));
    });
    if (!aborted()) soft_->blur(sigmas().x, sigmas().y, pixelops::Edge::Inside);
}

template <class T, int N, int max, int bgra>
void chromakeyerProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    const auto rows = [&](auto row) { OFX::joinRows<T, N>(band, std::array{sources[0]}, *destination, abort(), row); };
    if constexpr (N == 1) {
        return OFX::copyRows<T, N>(band, *sources[0], *destination, abort()); // no colour, nothing to key
    } else if (!blurs()) {
        const chromakeyer::Key key = this->key(bgra != 0);
        rows([&](int, int, const auto& from, T* to, std::size_t pixels) {
            simd::forType<T>(chromakeyer::keyByteRow, chromakeyer::keyFloatRow)(key, from[0], to, pixels);
        });
    } else {
        const chromakeyer::SoftKey key = {bgra ? 2 - dominant() : dominant(), values.showMatte != 0};
        rows([&](int x, int y, const auto& from, T* to, std::size_t pixels) {
            const int column = x - area().x1;
            simd::forType<T>(chromakeyer::softByteRow, chromakeyer::softFloatRow)(key, from[0], softRow(y) + column,
                                                                                  edgesRow(y) + column, to, pixels);
        });
    }
}

enum Kernel { kKey, kColumns, kRows, kSoft };

void chromakeyerOpenCLProcessor::process() {
    const chromakeyer::Key k = key(false);
    const auto block = [](double a, double b, double c, double d) {
        return cl_float4{{static_cast<float>(a), static_cast<float>(b), static_cast<float>(c), static_cast<float>(d)}};
    };
    const cl_float4 color = block(k.color.r, k.color.g, k.color.b, k.low);
    const cl_float4 tone = block(k.high, k.color.h, k.color.s, k.color.l);
    const cl_mem from = device(sources[0]), to = device(destination);
    if (!blurs()) {
        return pictureKernel(kKey).arg(k.showMatte ? 1 : 0).arg(color).arg(tone).run(width(), height());
    }
    const auto setShape = [](OpenCL::KernelCall& call, const pixelops::Gaussian& g, double sigma) {
        for (const auto& s : g.sections)
            call.arg(cl_float8{{s.n0, s.n1, s.m1, s.m2, s.d1, s.d2, s.forwardStart, s.backwardStart}});
        const float* w = g.weights;
        call.arg(cl_float8{{w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]}});
        call.arg(cl_float8{{static_cast<float>(g.taps), static_cast<float>(sigma), 0, 0, 0, 0, 0, 0}});
        call.arg(cl_float8{});
    };
    const auto [sigmaX, sigmaY] = sigmas();
    const pixelops::Gaussian columns(sigmaY, pixelops::Edge::Inside), rows(sigmaX, pixelops::Edge::Inside);
    const auto down = temporary(sources[0]), up = temporary(sources[0]), right = temporary(sources[0]),
               left = temporary(sources[0]);
    {
        auto call = kernel(kColumns);
        call.arg(from).arg(down.memory()).arg(up.memory());
        setShape(call, columns, sigmaY);
        call.arg(width()).arg(height()).arg(color).arg(tone).runLines(2 * width());
    }
    {
        auto call = kernel(kRows);
        call.arg(down.memory()).arg(up.memory()).arg(right.memory()).arg(left.memory());
        setShape(call, rows, sigmaX);
        call.arg(width()).arg(height()).runLines(2 * height());
    }
    kernel(kSoft)
        .arg(from)
        .arg(right.memory())
        .arg(left.memory())
        .arg(to)
        .arg(width())
        .arg(height())
        .arg(block(dominant(), k.showMatte ? 1 : 0, 0, 0))
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::chromakeyer, {"k9dad905a0", "k9dad905a1", "k9dad905a2", "k9dad905a3"});

constinit const OFX::EffectTraits chromakeyerPlugin::traits = {
    .label = "Orvix Chroma Keyer",
    .contexts = OFX::kFilter,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1253,
};

// The matte limits alpha and leaves the colours, so they are straight ones: a host that took them for premultiplied
// would add the screen to the background.
bool chromakeyerPlugin::getClipPreferences(const OFX::PropertySet& outArgs) {
    outArgs.set(kOfxImageEffectPropPreMultiplication, kOfxImageUnPreMultiplied);
    return true;
}

OFX_EFFECT(chromakeyer)
