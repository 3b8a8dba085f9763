// How far the demultiplexer is read ahead, what that costs the source, and what it gives.
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include <algorithm>
#include <thread>

#include "e2e/Opened.h"
#include "framework/CountingSource.h"
#include "support/Demuxer.h"

namespace orvel::test {

using namespace android;
using namespace std::chrono_literals;

namespace {

// What plain libavformat reads until more than 64 packets of sound and at least 31 pictures are
// there, as far as those tracks are started and without the packet that was delivered.
uint64_t bytesUntilFull(host::MemorySource& memory, const MediaFile& file,
                        const std::vector<size_t>& started) {
    host::CountingSource source(memory);
    const Demuxer demuxer(source, file.demuxer);
    AVFormatContext* context = demuxer.context();
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = AVDISCARD_ALL;
    int sound = INT_MAX, pictures = INT_MAX;
    for (size_t track : started) {
        AVStream* stream = context->streams[file.tracks[track].stream];
        const AVMediaType type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_SUBTITLE) continue;
        stream->discard = AVDISCARD_DEFAULT;
        int& count = type == AVMEDIA_TYPE_AUDIO ? sound : pictures;
        count = track == started[0] ? -1 : 0;
    }
    AVPacket* packet = av_packet_alloc();
    while ((sound <= 64 || pictures < 31) && av_read_frame(context, packet) >= 0) {
        const AVStream* stream = context->streams[packet->stream_index];
        if (stream->discard == AVDISCARD_DEFAULT) {
            ++(stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? sound : pictures);
        }
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    EXPECT_TRUE(sound > 64 && pictures >= 31) << "the file is too short";
    return source.counts().bytes;
}

}  // namespace

TEST(ReadAhead, stopsWhenEveryCacheIsFull) {
    const std::pair<const char*, std::vector<size_t>> cases[] = {
            {"wav_s24.wav", {0}},           // sound alone
            {"mp4_late_audio.mp4", {0}},    // pictures alone
            {"mp4_h264_eac3.mp4", {0, 2}},  // text is never read ahead
            {"flv_h264_aac.flv", {0, 1}}};
    for (const auto& [name, tracks] : cases) {
        SCOPED_TRACE(name);
        const MediaFile& file = mediaFile(name);
        Bytes bytes = file.bytes();
        if (file.container ==
            MEDIA_MIMETYPE_CONTAINER_WAV) {  // longer, with a size that is unknown
            const std::string chunk = "data";
            const auto size = std::search(bytes.begin(), bytes.end(), chunk.begin(), chunk.end());
            std::fill_n(size + 4, 4, 0xFF);
            bytes.resize(2 * bytes.size());
        }
        host::MemorySource memory(bytes);
        const uint64_t expected = bytesUntilFull(memory, file, tracks);
        host::CountingSource counting(memory);
        SwitchSource source(memory, counting);
        const auto extractor = openSniffedCalmly(source);
        ASSERT_TRUE(extractor);
        // Sample descriptions of text cost reads of their own.
        host::CountingSource plain(memory);
        const Demuxer demuxer(plain, file.demuxer);
        const uint64_t own = counting.counts().bytes - plain.counts().bytes;
        std::vector<std::unique_ptr<StartedTrack>> started;
        for (size_t track : tracks)
            started.push_back(std::make_unique<StartedTrack>(*extractor, track));
        EXPECT_EQ(started[0]->track->read().status, OK);
        const auto giveUp = std::chrono::steady_clock::now() + 10s;
        while (counting.counts().bytes < expected + own &&
               std::chrono::steady_clock::now() < giveUp)
            std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(50ms);  // what is read now is too much
        EXPECT_EQ(counting.counts().bytes, expected + own);
    }
}

class OneTrackAlone : public ::testing::TestWithParam<std::tuple<const char*, size_t>> {};
INSTANTIATE_TEST_SUITE_P(Media, OneTrackAlone,
                         ::testing::Combine(::testing::Values("mp4_hevc_eac3.mp4",
                                                              "mkv_h264_eac3.mkv",
                                                              "flv_h264_aac.flv", "rm_rv20_ac3.rm"),
                                            ::testing::Values(0, 1)));

// Whether the other track was never started, or was stopped: its packets are neither delivered nor
// read where the demultiplexer can do without.
TEST_P(OneTrackAlone, givesEverySampleAtTheCostOfPlainLibavformat) {
    const auto [name, track] = GetParam();
    const MediaFile& file = mediaFile(name);
    host::MemorySource memory(file.bytes());
    host::CountingSource theirs(memory);
    const Oracle oracle = readOracle(theirs, file, {track});
    for (const bool stopsTheOther : {false, true}) {
        host::CountingSource ours(memory);
        SwitchSource source(memory, ours);
        const auto extractor = openSniffedCalmly(source);
        ASSERT_TRUE(extractor);
        if (stopsTheOther) StartedTrack(*extractor, 1 - track).stop();
        StartedTrack only(*extractor, track);
        EXPECT_TRUE(sameSamples(readToEnd(*only.track).samples,
                                oracle.streams[file.tracks[track].stream].samples));
        EXPECT_EQ(ours.counts().bytes, theirs.counts().bytes) << stopsTheOther;
        EXPECT_EQ(only.track->read().status, ERROR_END_OF_STREAM);
        // The demultiplexer stands at the end: tracks started now have nothing more to give.
        StartedTrack other(*extractor, 1 - track);
        EXPECT_EQ(other.track->read().status, ERROR_END_OF_STREAM);
        only.stop();
        only.start();
        EXPECT_EQ(only.track->read().status, ERROR_END_OF_STREAM);
    }
}

}  // namespace orvel::test
