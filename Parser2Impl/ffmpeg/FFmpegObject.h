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
#include "OrvelMetaData.h"

namespace orvel {

class FFmpegExtensions;
class FFmpegIO;
class FFmpegReader;
class IOrvelMediaBuffer;
class OrvelDataSource;

// One container that FFmpeg has opened, or, made without an input format, the throw-away object
// that decides whether the plug-in takes a source.
//
// Owns the format context and all that hangs on it. Construction, addTrackInfos, the format queries
// and the per-track commands run on framework threads. There is no lock here: the reader serialises
// the commands and runs everything that touches the demuxer after opening on its looper thread; it
// holds this object weakly and promotes it for each use. FFmpeg's log callback is process-wide: an
// object that goes away silences FFmpeg's log for the others until the next one is opened.
class FFmpegObject : public android::RefBase {
  public:
    // One track: a stream that has a MIME type. Held by value, in ascending stream order; a track
    // index is a position in that list, and can differ from the stream index.
    struct TrackInfo {
        OrvelMetaData meta;          // the track format
        int32_t streamIndex = -1;    // FFmpeg's; the key of the reader's track map
        AVRational timeBase = {};    // the stream's, seconds
        int64_t durationUs = 0;      // 0: unknown
        AVStream* stream = nullptr;  // lives as long as the format context
        // Bits per coded sample of the last audio track described so far: its own, for an audio
        // track.
        int32_t bitsPerSample = 0;
    };

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

    // Bytes taken by the chain of ID3v2 tags at the start of the source (ID3v2.4.0, 3.1). From
    // 3 MiB on the exact value is not looked for any further.
    int64_t getID3Size();
    static bool isSupportID3(int flag);
    static bool isSpecialContainer(const char* formatName);
    // The main audio stream of the opened file is DTS or E-AC-3.
    bool isSupportedSpecialAudio();
    bool isSupportedSpecialVideo();
    bool isGeneratedByDivxTools();

    // The MIME type of an opened container, null for one outside the table. Constant.
    const char* getFileMime() const;

    // The MIME type for a codec; null for a codec that the plug-in does not offer. Any thread.
    static const char* codecId2MimeType(AVCodecID id);
    // Whether a video MIME type with this codec tag is one of the special combinations.
    static bool isSupportedMimeTypeWithCodec(const char* mime, const char* codecTag);
    // The PCM encoding code for a sample format; 16 bits for any that has none.
    static int32_t getAudioEncoding(AVSampleFormat format);

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

  protected:
    ~FFmpegObject() override;

  private:
    // Reads mFormatCtx, mTracks and mExtensions through a promoted reference.
    friend class FFmpegReader;

    // What the file metadata needs of the format context, taken when the container is open: from
    // then on the demuxer may change its tags and streams, on the looper thread, while the
    // framework asks.
    struct FileFacts {
        AVDictionary* tags = nullptr;
        const char* audioMime = nullptr;  // of the best audio stream; null without one
        AVPacket* cover = nullptr;        // the attached picture; null without one
        AVCodecID coverCodec = AV_CODEC_ID_NONE;

        ~FileFacts() {
            av_dict_free(&tags);
            av_packet_free(&cover);
        }
    };

    FFmpegObject(const FFmpegObject&) = delete;
    FFmpegObject& operator=(const FFmpegObject&) = delete;

    android::status_t initialize();
    // Of the opened context: whether the file, whose size costs no read, has a byte at least for
    // each sample of its index. A few boxes of an MP4 can claim millions that lie in one place,
    // and FFmpeg would spend minutes on them. True when the size is not known.
    bool hasPlausibleIndex() const;
    void unInitialize();

    bool sniffInternal(android::String8* mimeType, float* confidence, void** format);
    bool sniffSpecialContainer(AVInputFormatPtr format);
    int bestStream(AVMediaType type) const;

    void initTrackInfo(AVStream* stream, OrvelMetaData& meta, TrackInfo* info);
    void initAudioMeta(AVStream* stream, OrvelMetaData& meta, const char* mime);
    void parseAacMeta(OrvelMetaData& meta, uint8_t* data, int size);
    void parseAlacMeta(OrvelMetaData& meta, uint8_t* data, int size);
    void parseFlacMeta(OrvelMetaData& meta, uint8_t* data, int size);
    void setOrvelSpecificMeta(AVStream* stream, OrvelMetaData& meta);
    void initVideoMeta(AVStream* stream, OrvelMetaData& meta, const char* mime);
    void initSubtitleMeta(AVStream* stream, OrvelMetaData& meta);

    void takeFileFacts();
    void setFileMime(OrvelMetaData& meta);
    void setAlbumArtRelatedMeta(OrvelMetaData& meta);
    void setAlbumArt(OrvelMetaData& meta);
    static const char* getAlbumArtMime(AVCodecID codecId);

    // The part of the big-buffer gate that does not depend on the file.
    bool bigBuffersAllowed() const;

    // Destroyed in reverse order, the reader last.
    android::sp<FFmpegReader> mReader;  // null until the container is open
    android::status_t mInitCheck;
    android::sp<OrvelDataSource> mDataSource;
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
