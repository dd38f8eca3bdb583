// What a thread is doing: for which host a plug-in runs on it, and in which render. Pool threads inherit it from the
// thread that called them.
#pragma once

namespace host {

class Host;
struct RenderInProgress;

struct ThreadContext {
    Host* host = nullptr;
    const RenderInProgress* render = nullptr;

    static ThreadContext& current() {
        thread_local ThreadContext context;
        return context;
    }
};

// Sets the calling thread's context until the scope ends.
class ContextScope {
public:
    explicit ContextScope(ThreadContext context) : saved_(ThreadContext::current()) {
        ThreadContext::current() = context;
    }
    ~ContextScope() { ThreadContext::current() = saved_; }
    ContextScope(const ContextScope&) = delete;
    ContextScope& operator=(const ContextScope&) = delete;

private:
    ThreadContext saved_;
};

} // namespace host
