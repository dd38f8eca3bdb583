// A file that is being written: under a temporary name in the folder of its final name, which it takes only when it is
// complete. So nobody ever sees half a file.
#pragma once
#include <filesystem>

namespace cli {

class PendingFile {
public:
    explicit PendingFile(const std::filesystem::path& finalName);
    ~PendingFile(); // removes the file unless it was committed
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    // The temporary name; it has the extension of the final one.
    const std::filesystem::path& path() const { return path_; }
    void commit();

private:
    std::filesystem::path finalName_, path_;
};

// Throws unless files can be made in the folder of this name.
void requireWritable(const std::filesystem::path& file);

} // namespace cli
