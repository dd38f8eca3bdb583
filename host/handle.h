// Objects that plug-ins know by an opaque handle. Every live object stands in a table, so a null, foreign or outlived
// handle is recognised without being dereferenced.
#pragma once
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace host {

// The live objects of one kind, by the address that is their handle. Safe from any thread.
template <class Object>
class LiveTable {
public:
    static LiveTable& instance() {
        static LiveTable table;
        return table;
    }
    void insert(const void* handle, Object* object) {
        const std::unique_lock lock(mutex_);
        objects_[handle] = object;
    }
    void erase(const void* handle) {
        const std::unique_lock lock(mutex_);
        objects_.erase(handle);
    }
    Object* find(const void* handle) const {
        const std::shared_lock lock(mutex_);
        const auto found = objects_.find(handle);
        return found == objects_.end() ? nullptr : found->second;
    }

private:
    mutable std::shared_mutex mutex_;
    std::unordered_map<const void*, Object*> objects_;
};

// Base of such an object: gives its handle and finds it again.
template <class Object, class CHandle>
class Handle {
public:
    Handle(const Handle&) : Handle() {} // a copy is an object of its own
    Handle& operator=(const Handle&) = delete;

    CHandle handle() const { return reinterpret_cast<CHandle>(const_cast<Handle*>(this)); }
    static Object* from(const void* handle) { return static_cast<Object*>(LiveTable<Handle>::instance().find(handle)); }

protected:
    Handle() { LiveTable<Handle>::instance().insert(this, this); }
    ~Handle() { retire(); }
    // Makes the handle foreign before the object ends.
    void retire() { LiveTable<Handle>::instance().erase(this); }
};

} // namespace host
