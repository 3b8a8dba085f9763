#include "FakeExtractor.h"

#include <media/NdkMediaErrorPriv.h>
#include <media/NdkMediaFormat.h>
#include <media/stagefright/MediaErrors.h>

#include <cstdlib>

namespace {

using namespace android;

struct FileState {
    std::vector<FakeTrack>* tracks;
    std::vector<std::string>* log;
};

struct TrackState {
    FakeTrack* script;
    std::vector<std::string>* log;
    std::string number;
    CMediaBufferGroup* group = nullptr;
    size_t next = 0;

    static TrackState& of(void* data) { return *static_cast<TrackState*>(data); }
    void note(const std::string& text) { log->push_back(text); }
};

media_status_t start(void* data, CMediaBufferGroup* group) {
    auto& track = TrackState::of(data);
    track.note("start" + track.number);
    track.group = group;
    group->init(group->handle, 1, 16, 0);
    return translate_error(track.script->startStatus);
}

media_status_t read(void* data, CMediaBuffer** out, uint32_t options, int64_t seekTimeUs) {
    auto& track = TrackState::of(data);
    if (options & SEEK) {
        track.next = 0;
        track.note("seek" + track.number + "@" + std::to_string(seekTimeUs) + "/" +
                   std::to_string(options & 7));
    } else {
        track.note("read" + track.number);
    }
    if (track.next == track.script->timesUs.size()) return translate_error(track.script->end);
    CMediaBuffer* buffer = nullptr;
    const auto status = track.group->acquire_buffer(track.group->handle, &buffer, false, 10);
    if (status != AMEDIA_OK) return status;
    buffer->set_range(buffer->handle, 2, 8);
    AMediaFormat* format = buffer->meta_data(buffer->handle);
    AMediaFormat_setInt64(format, "timeUs", track.script->timesUs[track.next++]);
    *out = buffer;
    return AMEDIA_OK;
}

CMediaTrack* getTrack(void* data, size_t index) {
    const auto& file = *static_cast<FileState*>(data);
    if (index >= file.tracks->size()) return nullptr;
    auto* table = static_cast<CMediaTrack*>(calloc(1, sizeof(CMediaTrack)));
    table->data = new TrackState{&(*file.tracks)[index], file.log, std::to_string(index)};
    table->free = [](void* data) {
        auto& track = TrackState::of(data);
        track.note("free" + track.number);
        delete &track;
    };
    table->start = start;
    table->stop = [](void* data) {
        TrackState::of(data).note("stop" + TrackState::of(data).number);
        return AMEDIA_OK;
    };
    table->getFormat = [](void* data, AMediaFormat* format) {
        AMediaFormat_setString(format, "mime", TrackState::of(data).script->mime);
        return AMEDIA_OK;
    };
    table->read = read;
    return table;
}

}  // namespace

CMediaExtractor* makeFakeExtractor(std::vector<FakeTrack>* tracks, std::vector<std::string>* log) {
    auto* table = static_cast<CMediaExtractor*>(calloc(1, sizeof(CMediaExtractor)));
    table->data = new FileState{tracks, log};
    table->free = [](void* data) {
        static_cast<FileState*>(data)->log->push_back("free");
        delete static_cast<FileState*>(data);
    };
    table->countTracks = [](void* data) { return static_cast<FileState*>(data)->tracks->size(); };
    table->getTrack = getTrack;
    return table;
}
