// The command line through CLI11. A chain of effects is cut at each "+" first; each part is parsed by itself, so an
// option belongs to the effect before it.
#include "host/cli/arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>

#include "host/cli/error.h"
#include "host/text.h"

namespace cli {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kAbout =
    "Runs video effects (OpenFX plug-ins) on pictures, frame sequences and videos.\n"
    "Every command tells more with --help.";

constexpr const char* kRenderHelp = R"(Effects
  EFFECT is an identifier or its part after the colon; 'orvix list' shows them. Several effects make a chain, with a
  + between them: each takes the result of the one before. An option for an effect follows its name.
  A generator needs no input, a filter takes --in, a transition --from and --to. In a chain the earlier result stands
  for the input that is not given. A transition's progress runs from 0 to 1 over the frames unless it is set or keyed.

Values
  numbers 0.5, several components 1,0,0,1, switches true or false, options by name or index, texts as they are.
  Keys are time:value pairs, 0:0.1,24:1; times are frame numbers.

Files
  Pictures: PNG, JPEG, TIFF, EXR, DPX (more can be read); sequences: name.%04d.png; videos through ffmpeg: .mp4 (H.264),
  .mov (ProRes 4444), .mkv (lossless), .webm (VP9). Sound is not carried over.
  A sequence has the frame numbers of its files, a video counts from 0, a still picture is the same at any time.
  Values pass without a colour transform. Effects work on premultiplied colours: PNG, TIFF and video hold straight
  ones and are converted both ways; JPEG, DPX and .mp4 have no alpha and show the result over black.
  Byte renders write 8 bits (DPX 10, EXR half), float renders 16 bits (EXR half); --bits chooses another width.
  A file has its name only when it is complete. --frames splits a sequence between machines.

Examples
  orvix render brightnessandcontrast --in photo.jpg --set Contrast=0.3 --out bright.png
  orvix render checkerboard --size 1280x720 --out board.png
  orvix render brightnessandcontrast --in clip.mp4 --key Brightness=0:-1,24:0 --out fade.mp4
  orvix render checkerboard --size 640x360 + brightnessandcontrast --set Brightness=0.1 --out chain.exr
  orvix render brightnessandcontrast --in in.%04d.png --set Contrast=0.2 --frames 100-199 --out out.%04d.png)";

// "a-b" or "a"; numbers may be negative.
FrameRange parseFrames(const std::string& text) {
    FrameRange range;
    const char* const end = text.data() + text.size();
    auto [stop, status] = std::from_chars(text.data(), end, range.first);
    range.last = range.first;
    if (status == std::errc() && stop != end && *stop == '-') {
        const auto second = std::from_chars(stop + 1, end, range.last);
        stop = second.ptr;
        status = second.ec;
    }
    if (status != std::errc() || stop != end)
        throw UsageError("--frames ", text, ": allowed are one frame, 12, or a range, 0-24");
    if (range.last < range.first) throw UsageError("--frames ", text, ": the range ends before it begins");
    return range;
}

OfxPointI parseSize(const std::string& text) {
    constexpr int kMost = 1 << 16;
    OfxPointI size{};
    const char* const end = text.data() + text.size();
    const auto [x, status] = std::from_chars(text.data(), end, size.x);
    const bool one = status == std::errc() && x != end && *x == 'x';
    const auto [stop, second] = std::from_chars(one ? x + 1 : end, end, size.y);
    if (!one || second != std::errc() || stop != end || size.x < 1 || size.y < 1 || size.x > kMost || size.y > kMost)
        throw UsageError("--size ", text, ": allowed is WIDTHxHEIGHT from 1x1 to ", kMost, "x", kMost,
                         ", for example 1920x1080");
    return size;
}

Rate parseRate(const std::string& text) {
    constexpr double kMost = 1e6; // of either part
    const Words parts = host::split(text, '/');
    const auto numerator = host::parseNumber(parts.front());
    const auto denominator = parts.size() == 2 ? host::parseNumber(parts[1]) : std::optional<double>(1);
    if (parts.size() > 2 || !numerator || !denominator || *numerator <= 0 || *denominator <= 0 || *numerator > kMost ||
        *denominator > kMost || *numerator / *denominator > 1000)
        throw UsageError("--rate ", text,
                         ": allowed are frames per second up to 1000 such as 25, 23.976 or 30000/1001");
    if (parts.size() == 2) return {static_cast<int>(*numerator), static_cast<int>(*denominator)};
    return {static_cast<int>(*numerator * 1000 + 0.5), 1000};
}

std::vector<Assignment> parseAssignments(const Words& words, const char* option, const char* form) {
    std::vector<Assignment> assignments;
    for (const std::string& word : words) {
        const std::size_t sign = word.find('=');
        if (sign == std::string::npos || sign == 0) throw UsageError(option, " ", word, ": allowed is ", form);
        assignments.push_back({word.substr(0, sign), word.substr(sign + 1)});
    }
    return assignments;
}

// The text of a render's options before they are parsed. Those of the whole render may stand in any part of a chain.
struct RenderTexts {
    std::string frames, size, depth, order = "rgba", rate;
};
struct StageTexts {
    Words values, keys;
};

// An option whose value the help shows as `form`; given a list, it may be repeated.
template <class Value>
CLI::Option* add(CLI::App& app, const char* name, Value& value, const char* form, const char* about) {
    return app.add_option(name, value, about)->type_name(form)->allow_extra_args(false);
}

void addStageOptions(CLI::App& app, StageArguments& stage, StageTexts& texts) {
    add(app, "EFFECT", stage.effect, "", "The effect: its identifier, or the part after the colon")->required();
    add(app, "--in", stage.in, "FILE", "Input of a filter: picture, sequence or video");
    add(app, "--from", stage.from, "FILE", "First input of a transition");
    add(app, "--to", stage.to, "FILE", "Second input of a transition");
    add(app, "--set", texts.values, "NAME=VALUE", "A parameter's value; repeatable");
    add(app, "--key", texts.keys, "NAME=KEYS", "A parameter's keys, time:value,time:value; repeatable");
    add(app, "--press", stage.buttons, "NAME", "Press a button of the effect; repeatable");
}

void addRenderOptions(CLI::App& app, RenderArguments& render, RenderTexts& texts) {
    add(app, "--out", render.out, "FILE", "Output: picture, sequence or video");
    add(app, "--frames", texts.frames, "A-B",
        "Frames to render, 12 or 0-24; default: those of the inputs, else frame 0");
    add(app, "--size", texts.size, "WxH", "Size of generated pictures; default 1920x1080");
    add(app, "--depth", texts.depth, "DEPTH",
        "byte or float; default: what the inputs have; without one, byte (EXR: float)");
    add(app, "--order", texts.order, "ORDER", "Channel order in memory, rgba (default) or bgra; files look the same");
    add(app, "--rate", texts.rate, "RATE", "Frames per second of a video; default: the input's, else 25");
    add(app, "--bits", render.bits, "BITS", "Bits per channel in picture files: 8, 10, 16 or 32, as the format allows")
        ->check(CLI::IsMember({8, 10, 16, 32}).description(""));
    add(app, "--threads", render.threads, "N", "Threads; default: all of the machine, generators one")
        ->check(CLI::Range(1u, 1024u).description(""));
    CLI::Option* openCL = app.add_flag("--opencl", render.openCL, "Render on an OpenCL device");
    app.add_option("--device", render.device, "The OpenCL device; 'orvix devices' lists them; default 0")
        ->needs(openCL)
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--quiet", render.quiet, "Say nothing but errors");
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* about, Arguments& arguments) {
    CLI::App* command = app.add_subcommand(name, about);
    add(*command, "--bundle", arguments.bundles, "PATH",
        "A bundle to use instead of ours and those of OFX_PLUGIN_PATH and the system; repeatable");
    return command;
}

// The first word that CLI11 could not place, with the option that was probably meant.
UsageError unexpected(const CLI::App& command) {
    Words known;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    Words extras = command.remaining(true);
    const std::string word = extras.empty() ? "" : extras.front();
    return UsageError("unexpected argument '", word, "'", word.starts_with("-") ? host::suggestion(word, known) : "",
                      " (see orvix ", command.get_name(), " --help)");
}

// Parses one part of a chain; only a render has several.
void parsePart(const Words& words, Arguments& arguments, RenderTexts& texts) {
    CLI::App app(kAbout, "orvix");
    app.set_version_flag("--version", std::string("orvix ") + ORVIX_VERSION);
    app.require_subcommand(1);
    StageArguments stage;
    StageTexts stageTexts;

    CLI::App* list = addCommand(app, "list", "The effects: identifier, contexts, label", arguments);
    list->add_flag("--json", arguments.list.json, "As JSON");
    list->add_flag("--all", arguments.list.all, "Also effects that are not built yet");
    CLI::App* describe = addCommand(app, "describe", "Parameters, clips and contexts of an effect", arguments);
    add(*describe, "EFFECT", arguments.describe.effect, "", "The effect: its identifier, or the part after the colon")
        ->required();
    describe->add_flag("--json", arguments.describe.json, "As JSON");
    CLI::App* render = addCommand(app, "render", "Runs one effect or a chain of them", arguments);
    addStageOptions(*render, stage, stageTexts);
    addRenderOptions(*render, arguments.render, texts);
    render->footer(kRenderHelp);

    const CLI::App* devices = app.add_subcommand("devices", "The OpenCL devices that --opencl can use");

    try {
        app.parse(Words(words.rbegin(), words.rend()));
    } catch (const CLI::CallForVersion& version) {
        arguments.helpText = std::string(version.what()) + "\n";
        return;
    } catch (const CLI::Success&) {
        const auto chosen = app.get_subcommands();
        arguments.helpText = chosen.empty() ? app.help() : chosen.front()->help("orvix");
        return;
    } catch (const CLI::ExtrasError&) {
        const auto chosen = app.get_subcommands();
        throw unexpected(chosen.empty() ? app : *chosen.front());
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what(), "; see orvix --help");
    }

    arguments.command = list->parsed()       ? Arguments::Command::List
                        : describe->parsed() ? Arguments::Command::Describe
                        : devices->parsed()  ? Arguments::Command::Devices
                                             : Arguments::Command::Render;
    stage.values = parseAssignments(stageTexts.values, "--set", "Name=value");
    stage.keys = parseAssignments(stageTexts.keys, "--key", "Name=time:value,time:value");
    if (render->parsed()) arguments.render.stages.push_back(std::move(stage));
}

void checkRender(const RenderTexts& texts, RenderArguments& render) {
    if (!texts.frames.empty()) render.frames = parseFrames(texts.frames);
    if (!texts.size.empty()) render.size = parseSize(texts.size);
    if (!texts.rate.empty()) render.rate = parseRate(texts.rate);
    if (texts.depth == "byte")
        render.depth = host::Depth::Byte;
    else if (texts.depth == "float")
        render.depth = host::Depth::Float;
    else if (!texts.depth.empty())
        throw UsageError("--depth ", texts.depth, ": allowed are byte and float");
    if (texts.order == "bgra")
        render.order = host::Order::BGRA;
    else if (texts.order != "rgba")
        throw UsageError("--order ", texts.order, ": allowed are rgba and bgra");
    if (render.out.empty()) throw UsageError("--out is missing: the file to write");
}

} // namespace

Arguments parseArguments(const std::vector<std::string>& words) {
    static const Words kCommands = {"list", "describe", "render", "devices"};
    Arguments arguments;
    if (words.empty()) {
        RenderTexts none;
        parsePart({"--help"}, arguments, none);
        return arguments;
    }
    const std::string& command = words.front();
    if (!command.starts_with("-") && std::find(kCommands.begin(), kCommands.end(), command) == kCommands.end())
        throw UsageError("unknown command '", command, "'", host::suggestion(command, kCommands), " (there are ",
                         host::join(kCommands), ")");
    RenderTexts texts;
    const bool chain = command == "render";
    for (auto begin = words.begin(); begin != words.end();) {
        const auto end = chain ? std::find(begin, words.end(), "+") : words.end();
        Words part(begin, end);
        if (begin != words.begin()) part.insert(part.begin(), command);
        parsePart(part, arguments, texts);
        if (!arguments.helpText.empty()) {
            arguments.command = Arguments::Command::Help;
            return arguments;
        }
        if (end != words.end() && end + 1 == words.end()) throw UsageError("an effect is missing after the last +");
        begin = end == words.end() ? end : end + 1;
    }
    if (arguments.command == Arguments::Command::Render) checkRender(texts, arguments.render);
    return arguments;
}

} // namespace cli
