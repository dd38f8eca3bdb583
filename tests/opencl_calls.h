// What the tests against a library that records calls share: the library, a device of it, and what it recorded.
#pragma once
#include <dlfcn.h>

#include <array>
#include <cstring>

#include "host/opencl.h"
#include "tests/fake_opencl.h"
#include "tests/transition_support.h"

namespace test {

inline fake::Library& library() {
    static fake::Library& found = *[] {
        void* handle = dlopen("libOpenCL.so.1", RTLD_NOW); // found first through the search path that the test is given
        auto* get = handle ? reinterpret_cast<fake::Library* (*)()>(dlsym(handle, "fakeLibrary")) : nullptr;
        if (!get)
            throw std::runtime_error("run this test through ctest: the library that records calls is not in place");
        return get();
    }();
    return found;
}

class OpenCLCalls : public testing::Test {
protected:
    void SetUp() override {
        library() = {};
        device_ = std::make_shared<host::OpenCLDevice>();
    }
    void TearDown() override {
        device_.reset();
        EXPECT_EQ(library().kernels, 0);
        EXPECT_EQ(library().programs, 0);
        EXPECT_EQ(library().images, 0);
    }
    host::Options options() const {
        host::Options options = oneThread();
        options.openCL = device_;
        return options;
    }

private:
    std::shared_ptr<host::OpenCLDevice> device_;
};

inline OfxStatus renderOnDevice(Instance& instance, OfxRectI bounds, Format format = kBytes) {
    host::RenderRequest request;
    request.output = blank(format, bounds);
    request.openCL = true;
    return instance.render(request);
}

inline std::vector<fake::Call> callsOf(const std::string& name) {
    std::vector<fake::Call> found;
    for (const fake::Call& call : library().calls)
        if (call.name == name) found.push_back(call);
    return found;
}

template <class T>
std::vector<T> valueOf(const fake::Call& call) {
    std::vector<T> values(call.value.size() / sizeof(T));
    std::memcpy(values.data(), call.value.data(), call.value.size());
    return values;
}

inline std::vector<std::size_t> sizes(const std::vector<fake::Call>& arguments) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        EXPECT_EQ(arguments[i].numbers[0], i);
        result.push_back(arguments[i].numbers[1]);
    }
    return result;
}

inline constexpr OfxRectI kHD{0, 0, 1920, 1080};

} // namespace test
