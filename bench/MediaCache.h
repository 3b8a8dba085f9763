#pragma once

#include <filesystem>

#include "MediaTable.h"

namespace orvel::bench {

/**
 * The media that the cases read: made on first use with the ffmpeg command, kept outside the
 * repository, made anew when their recipe has changed. Some 2.2 GB when all are there.
 */
class MediaCache {
  public:
    /** Creates the folder, if needed; an empty path is defaultFolder(). */
    explicit MediaCache(std::filesystem::path folder);

    /** orvelmedia-bench in $XDG_CACHE_HOME, or in ~/.cache. */
    static std::filesystem::path defaultFolder();

    /**
     * The file, complete. Makes it first, with what it is made from, saying so on stderr. Throws
     * std::runtime_error when it cannot be made.
     */
    std::filesystem::path file(Media media) const;

    /** The same, and reads it through once, so that it is in the page cache. */
    std::filesystem::path warmFile(Media media) const;

    const std::filesystem::path& folder() const { return mFolder; }

  private:
    std::filesystem::path mFolder;
};

}  // namespace orvel::bench
