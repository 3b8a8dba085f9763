#pragma once

#include <stddef.h>
#include <stdint.h>

#include <atomic>
#include <memory>

#include <media/MediaExtractorPluginHelper.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String8.h>
#include <utils/StrongPointer.h>
#include <utils/Vector.h>

#include "FFmpegCompat.h"
#include "FileMeta.h"
#include "OpenContainer.h"
#include "base/OrvelMetaData.h"

namespace orvel {

class DemuxerSource;
class FFmpegExtensions;
class FFmpegIO;
class FFmpegReader;
class IOrvelMediaBuffer;
class OrvelDataSource;

// One container that FFmpeg has opened, or, made without an input format, the throw-away object
// that decides whether the plug-in takes a source. What it says of the file comes from functions
// beside it: ContainerProbe, SpecialContainer, TrackFormat, FileMeta.
//
// Owns the format context and all that hangs on it. Construction, addTrackInfos, the format queries
// and the per-track commands run on framework threads. There is no lock here: the reader serialises
// the commands and runs everything that touches the demuxer after opening on its looper thread; it
// holds this object weakly and promotes it for each use. FFmpeg's log callback is process-wide: an
// object that goes away silences FFmpeg's log for the others until the next one is opened.
class FFmpegObject : public android::RefBase {
  public:
    using TrackInfo = orvel::TrackInfo;

    // Opens the container with inputFormat, or only prepares sniffing when that is null. The
    // outcome is initCheck().
    FFmpegObject(const android::sp<OrvelDataSource>& source, AVInputFormatPtr inputFormat);

    // OK; NO_MEMORY for a container that could not be opened; BAD_VALUE for one without readable
    // stream information. After a failure the object is only good for being released.
    android::status_t initCheck() const { return mInitCheck; }

    // The bit mask of enabled containers, from the property "mm.enable.orvel_parser".
    static int32_t getParserFlags();

    // Whether the plug-in takes the source. On true, sets the container's MIME type, the confidence
    // (0.9) and the AVInputFormat* to open it with. A Matroska or MP4 file is opened for a second
    // look at its audio; the outputs stay written when that declines it. Only on a sniffing object,
    // once.
    bool sniff(android::String8* mimeType, float* confidence, void** format);

    // The MIME type of an opened container, a constant; null for one outside the table.
    const char* getFileMime() const { return mFileFacts.mime; }

    // The track list. addTrackInfos is called once, after initCheck() was OK and the modes below
    // were set; every stream is discarded by the demuxer until its track is started.
    void addTrackInfos();
    size_t getTracksCount() const { return mTracks.size(); }
    bool isInvalid(size_t index) const { return index >= mTracks.size(); }
    OrvelMetaData* getTrackMeta(size_t index);  // index must be valid

    // File-level metadata and, without a video track, the cover picture. BAD_VALUE, with nothing
    // set, unless initCheck() is OK.
    android::status_t getFileMeta(OrvelMetaData& meta);

    // Buffer mode: the bit of value 2 asks for several MP3 packets in one buffer. Playback mode:
    // non-zero when the source is local.
    int getBufferMode() const { return mBufferMode.load(); }
    void setBufferMode(int mode) { mBufferMode = mode; }
    void setPlayBackMode(int mode) { mPlayBackMode = mode != 0; }

    // Per-track commands, forwarded to the reader: UNKNOWN_ERROR without one. start also settles
    // the big-buffer request in params ("extra-flags" in, "big-buffer-flags" out); params may be
    // null. A successful dequeueBuffer hands its buffer to the caller.
    android::status_t start(int trackIndex, const android::sp<OrvelMetaData>& params);
    android::status_t stop(int trackIndex);
    android::status_t seek(int trackIndex, int64_t seekTimeUs, int seekMode);
    android::status_t flush(int trackIndex);
    android::status_t dequeueBuffer(int trackIndex, IOrvelMediaBuffer** buffer,
                                    const android::MediaTrackHelper::ReadOptions* options);

    // For the reader, which holds this object meanwhile. Only on an object with a reader.
    OpenContainer openContainer() { return {mFormatCtx, mTracks, *mExtensions}; }

  protected:
    ~FFmpegObject() override;

  private:
    FFmpegObject(const FFmpegObject&) = delete;
    FFmpegObject& operator=(const FFmpegObject&) = delete;

    android::status_t initialize();
    void unInitialize();
    // avformat_open_input with mOptions; false, with an error, when it fails.
    bool openInput(AVInputFormatPtr format);
    bool sniffInternal(android::String8* mimeType, float* confidence, void** format);
    bool sniffSpecialContainer(AVInputFormatPtr format);
    // Several MP3 packets may come in one buffer.
    bool bigBuffersAllowed() const;

    // Destroyed in reverse order, the reader last.
    android::sp<FFmpegReader> mReader;  // null until the container is open
    android::status_t mInitCheck;
    android::sp<OrvelDataSource> mDataSource;
    android::sp<DemuxerSource> mDemuxerSource;
    android::sp<FFmpegIO> mFFmpegIO;
    // Carries AVFMT_FLAG_CUSTOM_IO whenever it is closed, so that closing it leaves the bridge's
    // AVIOContext alone.
    AVFormatContext* mFormatCtx = nullptr;
    AVDictionary* mOptions = nullptr;
    AVInputFormatPtr mInputFormat;  // a static object of the library
    android::Vector<TrackInfo> mTracks;
    int32_t mBitsPerSample = 0;
    std::atomic<int32_t> mBufferMode{0};  // tracks may be started from several threads
    bool mPlayBackMode = false;
    bool mHasVideo = false;  // some track is a video track
    FileFacts mFileFacts;
    std::unique_ptr<FFmpegExtensions> mExtensions;  // null until the container is open
};

}  // namespace orvel
