// Processes and picture files for the tests of orvix.
#include "tests/command_line.h"

#include <OpenImageIO/imagebuf.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "host/text.h"

extern "C" char** environ;

namespace test {

namespace fs = std::filesystem;

namespace {

std::string textOf(std::FILE* stream) {
    std::string text;
    std::rewind(stream);
    for (int c; (c = std::fgetc(stream)) != EOF;) text += static_cast<char>(c);
    return text;
}

} // namespace

// ---- processes

Child::Child(const fs::path& folder, const std::string& command, const std::string& environment,
             const std::string& program) {
    Words words = host::split("env " + environment + " " + program + " " + command, ' ');
    std::erase(words, "");
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_adddup2(&actions, fileno(out_.get()), 1);
    posix_spawn_file_actions_adddup2(&actions, fileno(err_.get()), 2);
    const int error = posix_spawnp(&id_, "env", &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error("cannot start " + program);
}

Child::~Child() {
    if (id_ < 0) return;
    send(SIGKILL);
    wait();
}

void Child::send(int signal) const { kill(id_, signal); }

Result Child::wait() {
    int status = 0;
    waitpid(std::exchange(id_, -1), &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), textOf(out_.get()), textOf(err_.get())};
}

bool hasVideo() { return output("ffmpeg -version").starts_with("ffmpeg version"); }

CommandLine::~CommandLine() { fs::remove_all(folder); }

fs::path CommandLine::make() {
    std::string name = testing::TempDir() + "orvix-XXXXXX";
    if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a folder in " + testing::TempDir());
    return name;
}

std::string CommandLine::succeed(const std::string& command) const {
    const Result result = Child(folder, command).wait();
    EXPECT_EQ(result.status, 0) << "orvix " << command << '\n' << result.err;
    return result.out;
}

void CommandLine::expectFailures(int status, const std::vector<Mistake>& mistakes) const {
    const Words before = files();
    std::vector<std::unique_ptr<Child>> children;
    for (const Mistake& mistake : mistakes) children.push_back(std::make_unique<Child>(folder, mistake.command));
    for (std::size_t i = 0; i < mistakes.size(); ++i) {
        SCOPED_TRACE("orvix " + mistakes[i].command);
        const Result result = children[i]->wait();
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("orvix: "), std::string::npos) << result.err;
        for (const std::string& word : mistakes[i].words)
            EXPECT_NE(result.err.find(word), std::string::npos) << "no '" << word << "' in: " << result.err;
    }
    EXPECT_EQ(files(), before);
}

Words CommandLine::files() const {
    Words names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// ---- pictures

double largest(OIIO::TypeDesc::BASETYPE type) { return type == kUint8 ? 255 : type == kUint16 ? 65535 : 1; }

std::shared_ptr<Image> painted(Format format, OfxRectI bounds, const std::function<Pixel(int x, int y)>& pixel) {
    auto image = blank(format, bounds);
    for (int y = bounds.y1; y < bounds.y2; ++y)
        for (int x = bounds.x1; x < bounds.x2; ++x) put(*image, x, y, pixel(x, y));
    return image;
}

// OpenImageIO counts rows from the top, and does not touch the alpha that it is told to be straight.
void CommandLine::save(const std::string& file, const Image& image, Type type) const {
    OIIO::ImageSpec spec(image.width(), image.height(), 4, type);
    spec["oiio:UnassociatedAlpha"] = 1;
    OIIO::ImageBuf buffer(spec);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            std::array<float, 4> pixel;
            for (std::size_t c = 0; c < 4; ++c) pixel[c] = static_cast<float>(pixelAt(image, x, y)[c] / largest(type));
            buffer.setpixel(x, image.height() - 1 - y, pixel);
        }
    if (!buffer.write((folder / file).string())) throw std::runtime_error(buffer.geterror());
}

std::shared_ptr<Image> CommandLine::load(const std::string& file, Type type) const {
    OIIO::ImageSpec configuration;
    configuration["oiio:UnassociatedAlpha"] = 1;
    OIIO::ImageBuf buffer((folder / file).string(), 0, 0, nullptr, &configuration);
    if (!buffer.read(0, 0, true)) throw std::runtime_error(buffer.geterror());
    EXPECT_EQ(buffer.nativespec().format.basetype, type) << file;
    EXPECT_EQ(buffer.nchannels(), 4) << file;
    const OfxRectI bounds{0, 0, buffer.spec().width, buffer.spec().height};
    return painted(type == kUint8 ? kBytes : kFloats, bounds, [&](int x, int y) {
        std::array<float, 4> numbers{};
        buffer.getpixel(x, bounds.y2 - 1 - y, numbers.data(), 4);
        Pixel pixel{};
        for (std::size_t c = 0; c < 4; ++c)
            pixel[c] = largest(type) > 1 ? std::round(numbers[c] * largest(type)) : double(numbers[c]);
        return pixel;
    });
}

} // namespace test
