// The read-ahead: one pass of it, and whether there is another.

#define LOG_TAG "FFmpegReader"

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>

#include "ReaderSubtitle.h"
#include "ReaderTrack.h"
#include "ffmpeg/ErrorText.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {

using namespace android;

namespace {

// Reads packets into the caches of their started tracks until one of the wanted stream came, or of
// any for anyStream. 0, or FFmpeg's error at which reading ended.
int readPackets(AVFormatContext* context, const FFmpegReader::Tracks& tracks, bool anyStream,
                int32_t streamIndexWanted) {
    for (;;) {
        AVPacket* packet = av_packet_alloc();
        if (packet == nullptr) return AVERROR(ENOMEM);
        FFmpegReader::Track* track = nullptr;
        while (track == nullptr) {
            const int error = av_read_frame(context, packet);
            if (error < 0) {
                av_packet_free(&packet);
                return error;
            }
            track = startedTrack(tracks, packet->stream_index);
            // The demuxer delivers what it buffered while the file was opened also of streams that
            // are discarded. A subtitle track's samples come from the index, and would come twice.
            if (track == nullptr || track->isSubtitle()) {
                track = nullptr;
                av_packet_unref(packet);
            }
        }
        const bool wanted = anyStream || packet->stream_index == streamIndexWanted;
        track->cache()->append(packet);
        if (wanted) return 0;
    }
}

// Logs the error at which reading ended, and clears it: it is reported, and left in place it would
// turn a later clean end into the same error. The status that the tracks end with.
status_t endStatus(AVIOContext* pb, int error, int32_t streamIndexWanted) {
    const bool atEnd = error == AVERROR_EOF || avio_feof(pb) != 0;
    if (atEnd) {
        ALOGW("av_read_frame reach end of file, streamIndex:%d", streamIndexWanted);
    } else {
        ALOGE("av_read_frame error: %s", ErrorText(error).c_str());
    }
    pb->error = 0;
    return atEnd ? ERROR_END_OF_STREAM : ERROR_IO;
}

}  // namespace

void FFmpegReader::postQueueBuffer(int32_t streamIndex) {
    Track* track = startedTrack(mTracks, streamIndex);
    if (track != nullptr) {
        if (track->exchangeRequested(true)) return;
        newMessage(kWhatQueueBuffer, "stream_index", streamIndex)->post();
    } else if (!mAnyStreamRequested) {
        mAnyStreamRequested = true;
        mAnyStreamRequest->post();
    }
}

bool FFmpegReader::hasTrack(AVMediaType type) {
    return anyTrack(mTracks, [type](const Track& track) { return track.mediaType() == type; });
}

bool FFmpegReader::isAllTracksFull() {
    return !anyTrack(mTracks,
                     [](const Track& track) { return !track.isSubtitle() && !track.isFull(); });
}

void FFmpegReader::signalEOS(status_t status) {
    forEachTrack(mTracks, [status](const Track& track) {
        if (!track.isSubtitle()) track.cache()->signalEOS(status);
    });
}

void FFmpegReader::onQueueBuffer(const sp<AMessage>& msg) {
    // Without mLock, which a woken read takes next.
    if (runPass(msg) != AfterPass::Pass) wakeReads();
}

AfterPass FFmpegReader::runPass(const sp<AMessage>& msg) {
    int32_t streamIndexWanted = kAnyStream;
    const bool complete = msg->findInt32("stream_index", &streamIndexWanted);
    sp<FFmpegObject> object;  // outlives the lock
    PassLock lock(mLock);
    Track* wanted = startedTrack(mTracks, streamIndexWanted);
    if (wanted != nullptr) {
        wanted->exchangeRequested(false);
    } else {
        mAnyStreamRequested = false;
    }
    const bool subtitle = wanted != nullptr && wanted->isSubtitle();
    if (mReadPaused == Paused::ForSeek || (mReadPaused == Paused::AtEnd && !subtitle)) {
        return AfterPass::Nothing;
    }
    if (!complete) CHECK(msg->findInt32("stream_index", &streamIndexWanted));
    // An ended subtitle cache answers its reads by itself, until a seek.
    if (subtitle ? wanted->cache()->hasEnded() : isAllTracksFull()) return AfterPass::Nothing;
    // A request for a stream whose read has got its packet since becomes one for any stream. One
    // for any stream is left to a later request for a stream that a read waits for. So a command
    // waits for two passes beside the one under way, at most.
    const bool replaced =
            wanted != nullptr ? !wanted->needsPacket() : anyTrack(mTracks, [](const Track& track) {
                return track.isRequested() && track.needsPacket();
            });
    if (replaced && !subtitle) {
        if (wanted != nullptr) postQueueBuffer(kAnyStream);
        lock.setNext(AfterPass::Pass);
        return lock.next();
    }
    object = mFFmpegObject.promote();
    if (object == nullptr) return AfterPass::Nothing;
    const OpenContainer container = object->openContainer();
    if (subtitle) {
        // One sample for one request. Its end is that of this track alone.
        const status_t status = readSubtitleData(container, *wanted);
        if (status != OK) wanted->cache()->signalEOS(status);
        return AfterPass::Nothing;
    }

    const bool readWaits = anyTrack(mTracks, [](const Track& track) { return track.isAwaited(); });
    const int64_t beganNs = readWaits ? monotonicNs() : 0;
    const int error = readPackets(container.context, mTracks, streamIndexWanted == kAnyStream,
                                  streamIndexWanted);
    if (error < 0) {
        mReadPaused = Paused::AtEnd;
        signalEOS(endStatus(container.context->pb, error, streamIndexWanted));
        return AfterPass::Nothing;
    }
    postQueueBuffer(kAnyStream);
    const auto isServed = [](const Track& track) { return track.isServed(); };
    if (!readWaits || !anyTrack(mTracks, isServed)) {
        lock.setNext(AfterPass::Pass);
    } else {
        const bool first = anyTrack(
                mTracks, [](const Track& track) { return track.isServed() && track.isFresh(); });
        lock.setNext(mBatch.next(first, beganNs));
    }
    return lock.next();
}

void FFmpegReader::resumeReading() {
    mReadPaused = Paused::No;
    for (size_t i = 0; i < mTracks.size(); ++i) {
        const sp<Track>& track = mTracks[i];
        if (track == nullptr || !track->isAwaited()) continue;
        if (track->cache()->empty() && !track->cache()->hasEnded()) {
            postQueueBuffer(mTracks.keyAt(i));
        }
    }
}

void FFmpegReader::wakeReads() {
    mBatch.end();
    forEachTrack(mTracks, [](const Track& track) { track.cache()->wake(); });
}

}  // namespace orvel
