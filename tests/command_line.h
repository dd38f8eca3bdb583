// For tests of the program orvix: running it in a folder of its own, and picture files that are read and written
// without it.
#pragma once
#include <OpenImageIO/typedesc.h>
#include <sys/types.h>

#include <cstdio>
#include <filesystem>

#include "tests/support.h"

namespace test {

using Words = std::vector<std::string>;

struct Result {
    int status = -1;
    std::string out, err;
};

// orvix at work in a folder. A space separates the words of a command. The environment names no folders of plug-ins
// unless it is told to.
class Child {
public:
    Child(const std::filesystem::path& folder, const std::string& command,
          const std::string& environment = "OFX_PLUGIN_PATH=", const std::string& program = ORVIX_PROGRAM);
    ~Child(); // ends it
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void send(int signal) const;
    Result wait(); // until it ends

private:
    using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
    Stream out_{std::tmpfile(), std::fclose}, err_{std::tmpfile(), std::fclose};
    pid_t id_ = -1;
};

// Whether this machine can read and write videos.
bool hasVideo();

// A command that must fail, and what its message says.
struct Mistake {
    std::string command;
    Words words;
};

// A test with a folder.
class CommandLine : public testing::Test {
protected:
    ~CommandLine() override;

    std::string succeed(const std::string& command) const; // what it prints
    // No file may come or go. All run at once, since the program takes longer to start than to see what is wrong.
    void expectFailures(int status, const std::vector<Mistake>& mistakes) const;
    Words files() const; // hidden ones too

    // Images hold the numbers of files as they are: bytes, or floats that may be the whole numbers of 16-bit files.
    using Type = OIIO::TypeDesc::BASETYPE;
    void save(const std::string& file, const Image& image, Type type) const;
    std::shared_ptr<Image> load(const std::string& file, Type type) const;

    const std::filesystem::path folder = make();

private:
    static std::filesystem::path make();
};

inline constexpr auto kUint8 = OIIO::TypeDesc::UINT8, kUint16 = OIIO::TypeDesc::UINT16, kHalf = OIIO::TypeDesc::HALF,
                      kFloat = OIIO::TypeDesc::FLOAT;
// The number that stands for 1.
double largest(OIIO::TypeDesc::BASETYPE type);

std::shared_ptr<Image> painted(Format format, OfxRectI bounds, const std::function<Pixel(int x, int y)>& pixel);

} // namespace test
