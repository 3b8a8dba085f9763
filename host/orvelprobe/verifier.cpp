#include "verifier.h"

#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "log_capture.h"

namespace orvel::probe {
namespace {

// How far a sample is looked for before it counts as one that libavformat does not have.
constexpr size_t kLookAhead = 32;

}  // namespace

Verifier::Verifier(const std::string& path, const std::vector<TrackReport>& tracks,
                   size_t allTracks) {
    const LogCapture::Pause pause;
    mReport.library = Reference::library();
    mLanes.resize(tracks.size());
    const std::string container = tracks.empty() ? "" : tracks[0].format.text("file-format");
    try {
        mReference = std::make_unique<Reference>(path, container);
    } catch (const ReferenceError& error) {
        // Where the plug-in has found nothing either, both agree.
        if (!tracks.empty()) addTrack(std::nullopt, error.what());
        return;
    }
    match(tracks, allTracks);
}

// Track n is the nth stream that makes a track.
void Verifier::match(const std::vector<TrackReport>& tracks, size_t allTracks) {
    const std::vector<ReferenceStream>& streams = mReference->streams();
    std::vector<size_t> selected;
    for (size_t i = 0; i < tracks.size(); i++) {
        Lane& lane = mLanes[i];
        lane.track = lane.stream = tracks[i].index;
        const std::string mime = tracks[i].format.text(host::kKeyMime);
        if (lane.stream >= streams.size()) {
            addTrack(lane.track, "libavformat has no stream for it");
        } else if (streams[lane.stream].mime != mime) {
            addTrack(lane.track, "is " + mime + ", libavformat's stream " +
                                         std::to_string(streams[lane.stream].index) + " is " +
                                         streams[lane.stream].mime);
        } else {
            lane.compared = true;
            lane.comparesKey = mime != android::MEDIA_MIMETYPE_TEXT_3GPP;
            lane.form = deliveredForm(tracks[i].format, streams[lane.stream].bitsPerSample);
            selected.push_back(lane.stream);
        }
    }
    for (size_t i = allTracks; i < streams.size(); i++) {
        addTrack(std::nullopt, "no track for libavformat's stream " +
                                       std::to_string(streams[i].index) + ", " + streams[i].mime);
    }
    mReference->select(selected);
}

void Verifier::addTrack(std::optional<size_t> track, const std::string& text) {
    Difference difference;
    difference.what = Difference::What::Track;
    difference.track = track;
    difference.text = text;
    mReport.differences.push_back(std::move(difference));
}

void Verifier::add(Difference::What what, const Lane& lane, int64_t plugin, int64_t reference) {
    mReport.differences.push_back({what, lane.track, lane.next, plugin, reference, {}});
}

bool Verifier::isSame(const Lane& lane, const ReferencePacket& packet,
                      const host::Buffer& buffer) const {
    return packet.timeUs == buffer.timeUs().value_or(0) &&
           !firstDifference(lane.form, packet.data.data(), packet.data.size(), buffer.data(),
                            buffer.size());
}

void Verifier::compare(const Lane& lane, const ReferencePacket& packet,
                       const host::Buffer& buffer) {
    const int64_t timeUs = buffer.timeUs().value_or(0);
    if (timeUs != packet.timeUs) add(Difference::What::Time, lane, timeUs, packet.timeUs);
    const bool key = buffer.isSync().value_or(false);
    if (lane.comparesKey && key != packet.key) add(Difference::What::Key, lane, key, packet.key);
    const uint8_t* data = packet.data.data();
    const size_t wanted = deliveredSize(lane.form, data, packet.data.size());
    if (wanted != buffer.size()) {
        add(Difference::What::Size, lane, static_cast<int64_t>(buffer.size()),
            static_cast<int64_t>(wanted));
    } else if (const auto at = firstDifference(lane.form, data, packet.data.size(), buffer.data(),
                                               buffer.size())) {
        add(Difference::What::Payload, lane, static_cast<int64_t>(*at), static_cast<int64_t>(*at));
    }
}

// As a text comparison goes line by line: a sample that libavformat has further on means that those
// before it are missing; one with neither its time nor its contents there is an extra one.
void Verifier::sample(size_t position, const host::Buffer& buffer) {
    const LogCapture::Pause pause;
    Lane& lane = mLanes[position];
    if (!lane.compared) return;
    mReport.compared++;
    const ReferencePacket* packet = mReference->peek(lane.stream);
    if (packet && !isSame(lane, *packet, buffer)) {
        for (size_t ahead = 1; ahead <= kLookAhead; ahead++) {
            const ReferencePacket* later = mReference->peek(lane.stream, ahead);
            if (!later) break;
            if (!isSame(lane, *later, buffer)) continue;
            for (; ahead > 0; ahead--) {
                add(Difference::What::Missing, lane, 0, mReference->peek(lane.stream)->timeUs);
                mReference->pop(lane.stream);
            }
            break;
        }
        packet = mReference->peek(lane.stream);
    }
    const bool related =
            packet && (packet->timeUs == buffer.timeUs().value_or(0) ||
                       !firstDifference(lane.form, packet->data.data(), packet->data.size(),
                                        buffer.data(), buffer.size()));
    if (related) {
        compare(lane, *packet, buffer);
        mReference->pop(lane.stream);
    } else {
        add(Difference::What::Extra, lane, buffer.timeUs().value_or(0), 0);
    }
    lane.next++;
}

void Verifier::end(size_t position, int32_t status) {
    const LogCapture::Pause pause;
    Lane& lane = mLanes[position];
    if (!lane.compared || status == android::OK) return;
    while (const ReferencePacket* packet = mReference->peek(lane.stream)) {
        add(Difference::What::Missing, lane, 0, packet->timeUs);
        mReference->pop(lane.stream);
    }
    const int32_t wanted = mReference->failed() ? android::ERROR_IO : android::ERROR_END_OF_STREAM;
    if (status != wanted) add(Difference::What::End, lane, status, wanted);
}

}  // namespace orvel::probe
