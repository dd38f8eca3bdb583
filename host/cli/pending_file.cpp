// Temporary names are hidden and carry a random number, so that several programs may write into one folder.
#include "host/cli/pending_file.h"

#include <fstream>
#include <random>

#include "host/cli/error.h"

namespace cli {
namespace fs = std::filesystem;
namespace {

fs::path temporaryName(const fs::path& file) {
    std::random_device random;
    const fs::path name = join(".orvix-", std::hex, random(), "-", file.filename().string());
    return (file.has_parent_path() ? file.parent_path() : fs::path(".")) / name;
}

} // namespace

PendingFile::PendingFile(const fs::path& finalName) : finalName_(finalName), path_(temporaryName(finalName)) {}

PendingFile::~PendingFile() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove(path_, ignored);
}

void PendingFile::commit() {
    std::error_code error;
    fs::rename(path_, finalName_, error);
    if (error) throw Failure("cannot write ", finalName_.string(), ": ", error.message());
    path_.clear();
}

void requireWritable(const fs::path& file) {
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (!fs::is_directory(folder)) throw Failure("cannot write ", file.string(), ": no folder ", folder.string());
    if (fs::is_directory(file)) throw Failure("cannot write ", file.string(), ": it is a folder");
    // The only reliable way to learn whether a file can be made is to make one.
    const PendingFile probe(file);
    if (!std::ofstream(probe.path()))
        throw Failure("cannot write ", file.string(), ": no permission to make files in ", folder.string());
}

} // namespace cli
