// The command line: what the user asked for, checked as far as that is possible without opening anything.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "host/cli/media.h"

namespace cli {

struct ListArguments {
    bool json = false, all = false;
};

struct DescribeArguments {
    std::string effect;
    bool json = false;
};

// Name=value, as given.
struct Assignment {
    std::string name, value;
};

// One effect of a chain with what belongs to it.
struct StageArguments {
    std::string effect;
    std::string in, from, to; // files; empty: not given
    std::vector<Assignment> values, keys;
    std::vector<std::string> buttons;
};

struct RenderArguments {
    std::vector<StageArguments> stages;
    std::string out;
    std::optional<FrameRange> frames;
    std::optional<OfxPointI> size;
    std::optional<host::Depth> depth;
    host::Order order = host::Order::RGBA;
    std::optional<Rate> rate;
    int bits = 0;
    unsigned threads = 0; // 0: not given
    bool openCL = false;
    int device = 0; // of OpenCL
    bool quiet = false;
};

struct Arguments {
    enum class Command { Help, List, Describe, Render, Devices } command = Command::Help;
    std::vector<std::string> bundles;
    ListArguments list;
    DescribeArguments describe;
    RenderArguments render;
    std::string helpText; // of Help, also for --version
};

// Throws a UsageError.
Arguments parseArguments(const std::vector<std::string>& words);

} // namespace cli
