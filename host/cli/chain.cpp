// Stages pull: rendering one fetches from the stage before it, and so on up to the files.
#include "host/cli/chain.h"

#include <algorithm>
#include <cmath>

#include "host/cli/describe.h"
#include "host/cli/error.h"
#include "host/cli/pixels.h"
#include "host/text.h"

namespace cli {
namespace {

bool contains(const std::vector<std::string>& names, const char* name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// What an effect of these contexts needs, for an error message.
std::string needs(const std::vector<std::string>& contexts) {
    std::vector<std::string> ways;
    if (contains(contexts, kOfxImageEffectContextGenerator)) ways.emplace_back("without input, as a generator");
    if (contains(contexts, kOfxImageEffectContextFilter)) ways.emplace_back("as a filter, with --in FILE");
    if (contains(contexts, kOfxImageEffectContextTransition))
        ways.emplace_back("as a transition, with --from FILE --to FILE");
    return ways.empty() ? "only in contexts that orvix does not offer" : host::join(ways, " or ");
}

std::string contextFor(host::Plugin& plugin, std::size_t inputs, const std::string& name) {
    const std::vector<std::string> contexts = plugin.contexts();
    const char* const usual[] = {kOfxImageEffectContextGenerator, kOfxImageEffectContextFilter,
                                 kOfxImageEffectContextTransition};
    if (contains(contexts, usual[inputs])) return usual[inputs];
    if (contains(contexts, kOfxImageEffectContextGeneral)) return kOfxImageEffectContextGeneral;
    throw UsageError(name, " cannot run with ", inputs, inputs == 1 ? " input" : " inputs", "; it runs ",
                     needs(contexts));
}

// Effects that know blue-first images say so with the depths' names.
void checkFormat(const host::Descriptor& descriptor, const host::Format& format, const std::string& name) {
    if (!descriptor.supports(format.depth)) {
        std::vector<std::string> depths = descriptor.depths();
        for (std::string& depth : depths) depth = plainDepth(depth);
        throw UsageError(name, " does not work on ", plainDepth(host::ofxName(format.depth)), " images; it does on ",
                         host::join(depths));
    }
    if (format.order == host::Order::BGRA && !contains(descriptor.depths(), kOfxBitDepthByteBGR))
        throw UsageError("--order bgra: ", name, " knows red-first images only");
}

void checkOpenCL(const host::Descriptor& descriptor, const host::Format& format, const std::string& name) {
    if (descriptor.properties().getOr(kOfxImageEffectPropOpenCLSupported, std::string("false")) != "true")
        throw UsageError("--opencl: ", name, " has no kernels for images on a device");
    if (format.depth == host::Depth::Float && format.order == host::Order::BGRA)
        throw UsageError("--opencl: OpenCL has no blue-first float images; leave out --order bgra or --depth float");
}

} // namespace

OfxRectD Project::region() const {
    return {frame.x1 * pixelAspect, double(frame.y1), frame.x2 * pixelAspect, double(frame.y2)};
}

void Messages::add(const std::string& text) {
    const std::lock_guard lock(mutex_);
    text_ += (text_.empty() ? "" : "; ") + text;
}

std::string Messages::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(text_, {});
}

Stage::Stage(host::Plugin& plugin, const StageArguments& arguments, std::vector<Input> inputs, const Project& project,
             Messages& messages)
    : name_(arguments.effect),
      context_(contextFor(plugin, inputs.size(), name_)),
      inputs_(std::move(inputs)),
      project_(project),
      messages_(messages) {
    checkFormat(plugin.describe(), project.format, name_);
    if (project.openCL) checkOpenCL(plugin.describe(), project.format, name_);
    instance_ = plugin.createInstance(context_);
    connect();
    setValues(arguments);
    settleFormat();
    press(arguments.buttons);
}

// Connects the inputs in the order of the context; of a general effect, to its first clips.
void Stage::connect() {
    if (context_ == kOfxImageEffectContextFilter)
        clips_ = {kOfxImageEffectSimpleSourceClipName};
    else if (context_ == kOfxImageEffectContextTransition)
        clips_ = {kOfxImageEffectTransitionSourceFromClipName, kOfxImageEffectTransitionSourceToClipName};
    else
        for (const auto& clip : instance_->clips())
            if (!clip->isOutput() && clips_.size() < inputs_.size()) clips_.push_back(clip->name());
    if (clips_.size() < inputs_.size()) throw UsageError(name_, " takes fewer inputs: ", clips_.size());

    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        const Input& input = inputs_[i];
        instance_->clip(clips_[i]).connect([this, &input](double time) { return fetch(input, time); }, project_.format,
                                           input.region);
    }
}

// Some effects choose their format by their parameters.
void Stage::settleFormat() {
    instance_->clip(kOfxImageEffectOutputClipName).setFormat(project_.format);
    straight_ = instance_->clipPreferences().premultiplication == kOfxImageUnPreMultiplied;
    const host::Format format = instance_->clip(kOfxImageEffectOutputClipName).format();
    if (format.depth != project_.format.depth || format.components != host::Components::RGBA)
        throw Failure(name_, " insists on images of another format than RGBA ",
                      plainDepth(host::ofxName(project_.format.depth)));
}

void Stage::setValues(const StageArguments& arguments) {
    bool progressGiven = false;
    const auto apply = [&](const char* option, const Assignment& given,
                           void (host::Instance::*edit)(const std::string&, const std::string&)) {
        progressGiven |= given.name == kOfxImageEffectTransitionParamName;
        try {
            (*instance_.*edit)(given.name, given.value);
        } catch (const host::Error& error) {
            throw UsageError(name_, ": ", option, " ", given.name, "=", given.value, ": ", error.what());
        }
    };
    for (const Assignment& value : arguments.values) apply("--set", value, &host::Instance::edit);
    for (const Assignment& keys : arguments.keys) apply("--key", keys, &host::Instance::editKeys);
    if (context_ != kOfxImageEffectContextTransition || progressGiven) return;
    // One frame alone shows the middle of the transition.
    const auto [first, last] = project_.frames;
    instance_->editKeys(kOfxImageEffectTransitionParamName,
                        first == last ? join(first, ":0.5") : join(first, ":0,", last, ":1"));
}

void Stage::press(const std::vector<std::string>& wanted) {
    std::vector<std::string> buttons;
    for (const auto& parameter : instance_->parameters().all())
        if (parameter->kind().type == std::string(kOfxParamTypePushButton)) buttons.push_back(parameter->name());
    for (const std::string& button : wanted) {
        if (!contains(buttons, button.c_str()))
            throw UsageError(name_, ": --press ", button, ": there is no such button; the effect has ",
                             buttons.empty() ? "none" : host::join(buttons));
        const OfxStatus status = instance_->changed(button);
        throwInputFailure();
        require(status, "failed at --press " + button);
    }
}

// Keeps what went wrong in a file or an earlier stage, which the C API between could only pass on as a status.
std::shared_ptr<host::Image> Stage::fetch(const Input& input, double time) {
    try {
        return input.image(time);
    } catch (...) {
        const std::lock_guard lock(failureMutex_);
        inputFailure_ = std::current_exception();
        throw;
    }
}

void Stage::throwInputFailure() {
    const std::lock_guard lock(failureMutex_);
    if (inputFailure_) std::rethrow_exception(std::exchange(inputFailure_, nullptr));
}

std::shared_ptr<host::Image> Stage::frame(double time) {
    const std::lock_guard lock(mutex_);
    if (auto known = recent_.find(time)) return known;
    auto image = render(time);
    recent_.keep(time, image);
    return image;
}

// The region of definition in pixels, within the frame.
OfxRectI Stage::bounds(double time) {
    const OfxRectD region = instance_->regionOfDefinition(time);
    const OfxRectI& frame = project_.frame;
    const auto pixel = [](double position, int low, int high) {
        return static_cast<int>(std::clamp(position, double(low), double(high)));
    };
    const double aspect = project_.pixelAspect;
    return {pixel(std::floor(region.x1 / aspect), frame.x1, frame.x2), pixel(std::floor(region.y1), frame.y1, frame.y2),
            pixel(std::ceil(region.x2 / aspect), frame.x1, frame.x2), pixel(std::ceil(region.y2), frame.y1, frame.y2)};
}

std::shared_ptr<host::Image> Stage::render(double time) {
    const OfxRectI area = bounds(time);
    if (area.x1 >= area.x2 || area.y1 >= area.y2) {
        auto empty = std::make_shared<host::Image>(project_.format, project_.frame);
        empty->fill(std::byte{0});
        return empty;
    }
    host::RenderRequest request;
    request.time = time;
    request.output = std::make_shared<host::Image>(project_.format, area);
    request.output->pixelAspect = project_.pixelAspect;
    request.sequential = true;
    // Some generators draw each thread's band as a picture of its own, so one thread is right unless told otherwise.
    if (context_ == kOfxImageEffectContextGenerator && project_.threads == 0) request.threads = 1;
    if (const auto identity = instance_->identity(request))
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            if (clips_[i] == identity->clip) return inputs_[i].image(identity->time);

    request.openCL = project_.openCL;
    request.output->fill(std::byte{0}); // a plug-in may leave out pixels
    const OfxStatus status = instance_->render(request);
    throwInputFailure();
    require(status, join("failed at frame ", time));
    if (straight_) premultiply(*request.output); // files and the effects that follow expect that
    return request.output;
}

Input Stage::output() {
    const auto region = [this](double time) {
        const OfxRectI area = bounds(time);
        return OfxRectD{area.x1 * project_.pixelAspect, double(area.y1), area.x2 * project_.pixelAspect,
                        double(area.y2)};
    };
    return {[this](double time) { return frame(time); }, region};
}

void Stage::begin() {
    const OfxStatus status = instance_->beginSequence(
        {.frames = {double(project_.frames.first), double(project_.frames.last)}, .sequential = true});
    require(status, "cannot begin the sequence");
}

void Stage::end() {
    instance_->endSequence(
        {.frames = {double(project_.frames.first), double(project_.frames.last)}, .sequential = true});
}

void Stage::require(OfxStatus status, const std::string& what) {
    if (status == kOfxStatOK || status == kOfxStatReplyDefault) return;
    const std::string said = messages_.take();
    throw Failure(name_, " ", what, ": ", said.empty() ? "" : said + " ", "(", host::statusName(status), ")");
}

} // namespace cli
