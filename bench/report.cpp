// The page with the figures.
#include "bench/report.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

std::string text(const char* format, double number) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, format, number);
    return buffer;
}

void writeTable(std::ofstream& page, const std::vector<Row>& rows) {
    page << "| effect | setting | size | depth | threads | ms | multiple | triad | peak MiB |\n"
            "|---|---|---|---|---|---|---|---|---|\n";
    for (const Row& row : rows) {
        page << "| " << row.name(" | ") << " | " << text("%.2f", row.milliseconds) << " | "
             << text("%.2f", row.milliseconds / row.copy) << " | "
             << (row.triad > 0 ? text("%.2f", row.milliseconds / row.triad) : "") << " | "
             << text("%.1f", static_cast<double>(row.peakBytes) / (1 << 20)) << " |\n";
    }
}

void finish(std::ofstream& page, const std::string& file) {
    if (!page.flush()) throw std::runtime_error("cannot write " + file);
}

} // namespace

std::string Row::name(const char* separator) const {
    return effect.substr(effect.rfind(':') + 1) + separator + setting + separator + std::to_string(size.width) + "x" +
           std::to_string(size.height) + separator + (depth == host::Depth::Byte ? "byte" : "float") + separator +
           std::to_string(threads);
}

std::string bestLevel() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx512vbmi")) return "v4";
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? "v3" : "v2";
#else
    return "";
#endif
}

void writePage(const std::string& file, const std::vector<Row>& rows,
               const std::vector<std::pair<std::string, double>>& firstFrames) {
    std::ofstream page(file);
    page << "# Performance\n\nMade by `./scripts/bench`. Machine: " << processorName() << ", "
         << benchmark::CPUInfo::Get().num_cpus << " processors";
    for (const auto& cache : benchmark::CPUInfo::Get().caches) {
        page << ", L" << cache.level << " " << cache.type << " " << (cache.size >> 10) << " KiB";
    }
    page << ", instruction-set level " << bestLevel()
         << ".\n\n"
            "*ms* is the median time of a frame through the bundle and our host. *Multiple* is that time divided by "
            "the\n"
            "time of a plain streaming copy of one such frame on one thread, measured in turn with it: 1 is the "
            "memory's\n"
            "limit for a filter on one thread; a generator reads nothing and can get below. *Triad*, for effects with "
            "two\n"
            "inputs, compares with reading two frames and writing one. *Peak* is memory beside the frames.\n\n";
    writeTable(page, rows);
    page << "\n## First frame\n\n"
            "From opening the bundle in a new process to the first frame (1920x1080, bytes):\n\n"
            "| effect | ms |\n|---|---|\n";
    for (const auto& [effect, milliseconds] : firstFrames) {
        page << "| " << effect << " | " << text("%.1f", milliseconds) << " |\n";
    }
    finish(page, file);
}

void appendLevel(const std::string& file, const std::string& level, const std::vector<Row>& rows) {
    std::ofstream page(file, std::ios::app);
    page << "\n## Level " << level << "\n\nAs on a processor without anything newer (`ORVIX_SIMD=" << level
         << "`):\n\n";
    writeTable(page, rows);
    finish(page, file);
}

} // namespace bench
