// Files of the benchmarks, written through the platform layer.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/os.h"

namespace bench {

// Writes text as the whole content of path; ends the program on failure.
inline void WriteText(const std::string& path, const std::string& text) {
  os::OpenRequest request;
  request.write = true;
  request.disposition = os::Disposition::CreateAlways;
  request.streamMode = "wb";
  os::OpenedStream out = os::OpenStream(path.c_str(), request);
  if (!out.file) {
    std::fprintf(stderr, "cannot write %s (error %d)\n", path.c_str(), out.error);
    std::exit(1);
  }
  std::fwrite(text.data(), 1, text.size(), out.file.get());
}

}  // namespace bench
