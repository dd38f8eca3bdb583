// Opens the inputs, settles size, frames and format, builds the stages, and runs them frame by frame.
#include "host/cli/render.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "host/cli/catalogue.h"
#include "host/cli/chain.h"
#include "host/cli/error.h"
#include "host/cli/pixels.h"
#include "host/cli/progress.h"
#include "host/cli/stop_signal.h"
#include "host/opencl.h"

namespace cli {
namespace {

// The files of one stage.
struct StageSources {
    std::unique_ptr<Source> in, from, to;
};

// Everything that a render reads.
class Inputs {
public:
    explicit Inputs(const RenderArguments& arguments) {
        for (const StageArguments& stage : arguments.stages) {
            if (!stage.in.empty() && !(stage.from.empty() && stage.to.empty()))
                throw UsageError(stage.effect, ": --in is for filters, --from and --to are for transitions");
            stages_.push_back({open(stage.in), open(stage.from), open(stage.to)});
        }
    }

    const MediaInfo* first() const { return all_.empty() ? nullptr : &all_.front()->info(); }
    bool deep() const {
        return std::any_of(all_.begin(), all_.end(), [](const Source* source) { return source->info().deep; });
    }

    // Throws unless all inputs have one size.
    OfxRectI frame(const RenderArguments& arguments) const;
    FrameRange frames(const RenderArguments& arguments) const;
    // What the stage works on, `before` being the result of the stage before it, which is used exactly once.
    std::vector<Input> of(std::size_t stage, const StageArguments&, std::optional<Input> before, const Project&) const;

private:
    std::unique_ptr<Source> open(const std::string& name) {
        if (name.empty()) return nullptr;
        std::unique_ptr<Source> source = openSource(name);
        all_.push_back(source.get());
        return source;
    }

    std::vector<StageSources> stages_;
    std::vector<Source*> all_;
};

OfxRectI Inputs::frame(const RenderArguments& arguments) const {
    const OfxPointI size = arguments.size.value_or(OfxPointI{1920, 1080});
    if (all_.empty()) return {0, 0, size.x, size.y};
    const Source& first = *all_.front();
    const MediaInfo& info = first.info();
    if (arguments.size && (size.x != info.width || size.y != info.height))
        throw UsageError("--size ", size.x, "x", size.y, " is for generators; the result has the size of ",
                         first.name(), ", ", info.width, "x", info.height);
    for (const Source* source : all_)
        if (source->info().width != info.width || source->info().height != info.height)
            throw UsageError("the inputs differ in size: ", first.name(), " is ", info.width, "x", first.info().height,
                             ", ", source->name(), " is ", source->info().width, "x", source->info().height);
    return {0, 0, first.info().width, first.info().height};
}

FrameRange Inputs::frames(const RenderArguments& arguments) const {
    std::optional<FrameRange> common = arguments.frames;
    for (const Source* source : all_) {
        if (!source->info().frames) continue;
        const FrameRange has = *source->info().frames;
        if (arguments.frames && (common->first < has.first || common->last > has.last))
            throw UsageError("--frames ", common->first, "-", common->last, ": ", source->name(), " has the frames ",
                             has.first, "-", has.last);
        if (!common) common = has;
        *common = {std::max(common->first, has.first), std::min(common->last, has.last)};
        if (common->last < common->first) throw UsageError("the inputs have no frame number in common");
    }
    return common.value_or(FrameRange{});
}

std::vector<Input> Inputs::of(std::size_t stage, const StageArguments& arguments, std::optional<Input> before,
                              const Project& project) const {
    const auto file = [&](const std::unique_ptr<Source>& source) {
        return Input{[&source = *source, &project](double time) {
                         return source.frame(static_cast<int>(std::lround(time)), project.format);
                     },
                     [&project](double) { return project.region(); }};
    };
    const auto& [in, from, to] = stages_[stage];
    if (before && (in || (from && to)))
        throw UsageError(arguments.effect,
                         " follows another effect in the chain and takes its result; give at most one "
                         "of --from and --to");
    if (in) return {file(in)};
    if (!from && !to) return before ? std::vector<Input>{*before} : std::vector<Input>{};
    if (!before && (!from || !to)) throw UsageError(arguments.effect, ": --from and --to go together");
    return {from ? file(from) : *before, to ? file(to) : *before};
}

// What the user says; else what the inputs have, or the output for want of inputs, as far as the effects allow it.
host::Depth chooseDepth(const RenderArguments& arguments, const Inputs& inputs,
                        const std::vector<host::Plugin*>& plugins) {
    if (arguments.depth) return *arguments.depth;
    const bool deep = prefersFloat(arguments.out) || inputs.deep();
    const host::Depth wanted = deep ? host::Depth::Float : host::Depth::Byte;
    const host::Depth other = deep ? host::Depth::Byte : host::Depth::Float;
    const auto possible = [&](host::Depth depth) {
        return std::all_of(plugins.begin(), plugins.end(),
                           [&](host::Plugin* plugin) { return plugin->describe().supports(depth); });
    };
    return !possible(wanted) && possible(other) ? other : wanted;
}

host::Options hostOptions(const Project& project, const Rate& rate, Progress& progress, Messages& messages) {
    host::Options options;
    options.threads = project.threads;
    options.projectSize = {project.region().x2, project.region().y2};
    options.pixelAspect = project.pixelAspect;
    options.frameRate = rate.perSecond();
    options.frames = {double(project.frames.first), double(project.frames.last)};
    options.time = project.frames.first;
    options.abort = [] { return stopSignal() != 0; };
    options.onProgress = [&progress](const std::string& label, double fraction) {
        progress.effect(label, fraction);
        return stopSignal() == 0;
    };
    options.onMessage = [&messages](const char* type, const char*, const char* text) {
        messages.add(text ? text : "");
        return type && std::string(type) == kOfxMessageQuestion ? kOfxStatReplyNo : kOfxStatOK;
    };
    return options;
}

std::vector<std::unique_ptr<Stage>> buildStages(const RenderArguments& arguments,
                                                const std::vector<host::Plugin*>& plugins, const Inputs& inputs,
                                                const Project& project, Messages& messages) {
    std::vector<std::unique_ptr<Stage>> stages;
    for (std::size_t i = 0; i < plugins.size(); ++i) {
        const auto before = stages.empty() ? std::nullopt : std::optional(stages.back()->output());
        stages.push_back(std::make_unique<Stage>(
            *plugins[i], arguments.stages[i], inputs.of(i, arguments.stages[i], before, project), project, messages));
        checkStop();
    }
    return stages;
}

SinkSettings sinkSettings(const RenderArguments& arguments, const Project& project, const Rate& rate) {
    return {.width = project.frame.x2,
            .height = project.frame.y2,
            .pixelAspect = project.pixelAspect,
            .rate = rate,
            .depth = project.format.depth,
            .bits = arguments.bits,
            .frameCount = project.frames.count(),
            .threads = project.threads != 0 ? project.threads : std::max(1u, std::thread::hardware_concurrency())};
}

void run(const std::vector<std::unique_ptr<Stage>>& stages, const Project& project, host::Host& host, Sink& sink,
         Progress& progress, Messages& messages) {
    for (const auto& stage : stages) stage->begin();
    progress.update(0);
    for (int frame = project.frames.first; frame <= project.frames.last; ++frame) {
        host.setTime(frame);
        std::shared_ptr<host::Image> image;
        try {
            image = stages.back()->frame(frame);
        } catch (...) {
            checkStop(); // an effect that was asked to stop may call that a failure
            throw;
        }
        checkStop();
        sink.write(frame, framed(image, project.frame));
        progress.update(frame - project.frames.first + 1);
        if (const std::string said = messages.take(); !said.empty()) progress.note(said);
    }
    for (const auto& stage : stages) stage->end();
    sink.finish();
}

} // namespace

void render(const Arguments& all) {
    const RenderArguments& arguments = all.render;
    const Inputs inputs(arguments);
    Project project;
    project.frame = inputs.frame(arguments);
    project.frames = inputs.frames(arguments);
    project.threads = arguments.threads;
    project.openCL = arguments.openCL;
    if (inputs.first()) project.pixelAspect = inputs.first()->pixelAspect;
    const std::optional<Rate> inputRate = inputs.first() ? inputs.first()->rate : std::nullopt;
    const Rate rate = arguments.rate ? *arguments.rate : inputRate.value_or(Rate{});

    Messages messages;
    Progress progress(project.frames.count(), arguments.quiet);
    host::Options options = hostOptions(project, rate, progress, messages);
    if (arguments.openCL) options.openCL = std::make_shared<host::OpenCLDevice>(arguments.device);
    host::Host host(std::move(options));
    Catalogue catalogue(host, all.bundles);
    std::vector<host::Plugin*> plugins;
    for (const StageArguments& stage : arguments.stages) plugins.push_back(&catalogue.find(stage.effect));
    project.format = {chooseDepth(arguments, inputs, plugins), host::Components::RGBA, arguments.order};

    const auto stages = buildStages(arguments, plugins, inputs, project, messages);
    const std::unique_ptr<Sink> sink = openSink(arguments.out, sinkSettings(arguments, project, rate));
    run(stages, project, host, *sink, progress, messages);
    for (const std::string& misuse : host.misuse()) progress.note("warning: " + misuse);
    progress.finish(arguments.out);
}

} // namespace cli
