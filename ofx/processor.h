// Processors: one object per render that holds everything the render needs and works on row bands over the host's
// threads.
#pragma once

#include <atomic>
#include <functional>

#include "ofx/image.h"

namespace OFX {

class ImageEffect;

namespace MultiThread {

// Runs a function once for every index below the count that the host passes, on the host's threads; a requested count
// of 0 lets the host choose. Where the host has no threads, fails, or runs nothing, the function runs once as (0, 1).
// The first exception of any thread is thrown again here.
void run(unsigned requested, const std::function<void(unsigned index, unsigned count)>& function);

// The same for pieces of work that do not depend on each other: one stage of a job with several. The function gets a
// range of pieces.
void stage(std::size_t pieces, const std::function<void(std::size_t first, std::size_t last)>& function);

class Processor {
public:
    virtual ~Processor() = default;
    virtual void multiThreadFunction(unsigned index, unsigned count) = 0;
    virtual void multiThread(unsigned count = 0);
};

} // namespace MultiThread

// The rows of thread `index` of `count`: y1 + index dy / count to y1 + (index + 1) dy / count, in unsigned arithmetic.
RectI band(const RectI& window, unsigned index, unsigned count);

// A stage over the rows of an area.
void stageRows(const RectI& area, const std::function<void(const RectI& rows)>& function);

class ImageProcessor : public MultiThread::Processor {
public:
    explicit ImageProcessor(ImageEffect& effect) : effect_(effect) {}

    void setDestination(const Image* image) { destination = image; }
    void setRenderWindow(const RectI& rectangle) { window = rectangle; }

    void multiThreadFunction(unsigned index, unsigned count) override;

    // What belongs to the whole render: tables, temporary pictures. Runs once, before the bands.
    virtual void preProcess() {}
    // The rows of one band; runs on several threads at once, each with rows of its own.
    virtual void processWindow(const RectI& band) = 0;
    virtual void postProcess() {}
    // The whole job: nothing without a destination image, or without memory for what preProcess makes.
    virtual void process();

    const Image* destination = nullptr;
    RectI window{}; // the render window, in pixels

protected:
    // The part of the window that is rendered: hosts may ask for more than the image holds.
    RectI area() const { return intersection(window, destination->bounds()); }
    // The rows of a band one by one, on the processors that the host's threads leave idle (see pixelops/parallel.h).
    // Stops when the host aborts.
    void eachRow(const RectI& band, const std::function<void(const RectI& row)>& function) const;
    bool aborted() const;

    ImageEffect& effect_;

private:
    std::atomic<unsigned> threads_ = 1; // of the host, at work on the present stage
};

} // namespace OFX
