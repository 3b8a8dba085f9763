#pragma once

#include <cstddef>

namespace orvel::bench {

enum class Media {
    MovieSeed,
    Movie,
    UhdSeed,
    Uhd,
    Clip,
    ClipAac,
    ClipMatroska,
    LateAudioSeed,
    LateAudio,
    SongMinute,
    Song,
    SoundMinute,
    Sound,
    Flac,
    Ogg,
    Noise,
    Count,
};

/** How one file is made. */
struct Recipe {
    Media media;
    const char* file;     // name in the cache folder
    const char* demuxer;  // FFmpeg's short name; null for what is never opened
    // Arguments of the ffmpeg command, separated by spaces, without the output; @ is the file of
    // `seed`. Null: made by writeLateAudio.
    const char* arguments;
    Media seed;  // Count: none
};

constexpr size_t kMediaCount = static_cast<size_t>(Media::Count);

/** In the order of Media. */
extern const Recipe kRecipes[kMediaCount];

}  // namespace orvel::bench
