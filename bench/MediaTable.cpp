#include "MediaTable.h"

namespace orvel::bench {

// Pictures carry noise, so that the encoder spends the bitrate that it is given. Long files repeat
// a short one by copying its packets: making them takes as long as writing them.

#define ORVEL_PICTURES(size, rate, seconds) \
    "-f lavfi -i testsrc2=size=" size ":rate=" rate ":duration=" seconds ",noise=alls=24:allf=t "
#define ORVEL_SOUND(rate, seconds) \
    "-f lavfi -i anoisesrc=sample_rate=" rate ":amplitude=0.3:duration=" seconds " "
#define ORVEL_X264 "-c:v libx264 -preset ultrafast -bf 2 -pix_fmt yuv420p "
#define ORVEL_EAC3 "-c:a eac3 -b:a 640k -ac 6 "
#define ORVEL_FOREVER "-stream_loop -1 -i @ -map 0 -c copy "

constexpr Recipe kRecipes[kMediaCount] = {
        // 1080p H.264 of 16 Mbit/s with B frames, a key frame every two seconds, 5.1 E-AC-3; 20 s
        // are a whole number of pictures and of sound frames.
        {Media::MovieSeed, "movie-seed.mp4", "mov",
         ORVEL_PICTURES("1920x1080", "25", "20") ORVEL_SOUND("48000", "20") ORVEL_X264
         "-b:v 16M -maxrate 20M -bufsize 16M -g 50 " ORVEL_EAC3 "-f mp4",
         Media::Count},
        {Media::Movie, "movie.mp4", "mov", ORVEL_FOREVER "-fs 600000000 -f mp4", Media::MovieSeed},
        {Media::UhdSeed, "uhd-seed.mp4", "mov",
         ORVEL_PICTURES("3840x2160", "30", "4") ORVEL_SOUND("48000", "4") ORVEL_X264
         "-b:v 100M -maxrate 120M -bufsize 100M -g 60 " ORVEL_EAC3 "-f mp4",
         Media::Count},
        {Media::Uhd, "uhd.mp4", "mov", ORVEL_FOREVER "-fs 600000000 -f mp4", Media::UhdSeed},
        {Media::Clip, "clip.mp4", "mov", "-i @ -t 10 -map 0 -c copy -f mp4", Media::MovieSeed},
        {Media::ClipAac, "clip-aac.mp4", "mov", "-i @ -c:v copy -c:a aac -b:a 128k -f mp4",
         Media::Clip},
        {Media::ClipMatroska, "clip.mkv", "matroska", "-i @ -map 0 -c copy -f matroska",
         Media::Clip},
        {Media::LateAudioSeed, "late-audio-seed.mp4", "mov", ORVEL_FOREVER "-t 120 -f mp4",
         Media::MovieSeed},
        // The same packets; in the file each sound packet lies 40 s behind its pictures. Matroska,
        // because its demuxer reads in the order of the file; the MP4 one would jump.
        {Media::LateAudio, "late-audio.mkv", "matroska", nullptr, Media::LateAudioSeed},
        {Media::SongMinute, "song-minute.mp3", "mp3",
         ORVEL_SOUND("44100", "60") "-ac 2 -c:a libmp3lame -b:a 192k -f mp3", Media::Count},
        {Media::Song, "song.mp3", "mp3", ORVEL_FOREVER "-t 3600 -f mp3", Media::SongMinute},
        {Media::SoundMinute, "sound-minute.aiff", "aiff",
         ORVEL_SOUND("44100", "60") "-ac 2 -c:a pcm_s16be -f aiff", Media::Count},
        {Media::Sound, "sound.aiff", "aiff", ORVEL_FOREVER "-t 3600 -f aiff", Media::SoundMinute},
        {Media::Flac, "sound.flac", "flac", "-i @ -c:a flac -f flac", Media::SoundMinute},
        {Media::Ogg, "sound.ogg", "ogg", "-i @ -c:a flac -f ogg", Media::SoundMinute},
        {Media::Noise, "noise.bin", nullptr, ORVEL_SOUND("44100", "10") "-c:a pcm_s16le -f s16le",
         Media::Count},
};

namespace {

constexpr bool isInOrder() {
    for (size_t i = 0; i < kMediaCount; ++i) {
        if (kRecipes[i].media != static_cast<Media>(i)) return false;
    }
    return true;
}
static_assert(isInOrder());

}  // namespace
}  // namespace orvel::bench
