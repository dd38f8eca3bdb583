// Videos, read and written by running ffmpeg (and ffprobe, which tells about a file) with raw pixels in a pipe.
#pragma once
#include <string>
#include <vector>

#include "host/cli/media.h"

namespace cli {

// Whether the name has a video's extension.
bool isVideo(const std::string& name);
std::vector<std::string> videoOutputExtensions();

std::unique_ptr<Source> openVideoSource(const std::string& file);
std::unique_ptr<Sink> openVideoSink(const std::string& file, const SinkSettings&);

} // namespace cli
