// Instances: construction, abort, messages and progress.
#include "ofx/image_effect.h"

#include "ofx/exception.h"
#include "ofx/log.h"
#include "ofx/suites.h"

namespace OFX {
namespace {

OfxParamSetHandle paramSetOf(OfxImageEffectHandle effect) {
    OfxParamSetHandle set = nullptr;
    Exception::throwUnlessOK(suites().imageEffect->getParamSet(effect, &set), "getParamSet");
    return set;
}

std::vector<Clip> fetchClips(OfxImageEffectHandle effect, std::span<const char* const> names) {
    std::vector<Clip> clips;
    clips.reserve(names.size());
    for (const char* name : names) clips.emplace_back(effect, name);
    return clips;
}

} // namespace

ImageEffect::ImageEffect(OfxImageEffectHandle handle, std::span<const char* const> sourceClips,
                         std::span<const Param> params)
    : ParamSet(paramSetOf(handle)),
      handle_(handle),
      output_(handle, kOfxImageEffectOutputClipName),
      sources_(fetchClips(handle, sourceClips)) {
    fetch(params);
}

bool ImageEffect::aborted() const { return suites().imageEffect->abort(handle_) != 0; }

void ImageEffect::showMessage(const char* type, const char* text) const {
    log(LogLevel::Warning, "%s", text);
    if (const auto* suite = suites().message) suite->message(handle_, type, "", "%s", text);
}

Progress::Progress(const ImageEffect& effect, const char* label) : effect_(effect.handle()) {
    const auto* suite = suites().progress;
    started_ = suite != nullptr && suite->progressStart(effect_, label) == kOfxStatOK;
}

Progress::~Progress() {
    if (started_) suites().progress->progressEnd(effect_);
}

bool Progress::update(double done) const {
    return !started_ || suites().progress->progressUpdate(effect_, done) != kOfxStatReplyNo;
}

} // namespace OFX
