#include "verify/Verifier.h"

#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "Words.h"
#include "collect/PluginLog.h"

namespace orvel::probe {
namespace {

// How far a sample is looked for before it counts as one that libavformat does not have.
constexpr size_t kLookAhead = 32;
constexpr size_t kMaxKept = 20000;

int64_t timeOf(const host::Buffer& buffer) {
    return buffer.timeUs().value_or(0);
}

bool isEqual(const std::vector<uint8_t>& bytes, const host::Buffer& buffer) {
    return std::equal(bytes.begin(), bytes.end(), buffer.data(), buffer.data() + buffer.size());
}

}  // namespace

Verifier::Verifier(const std::string& path, const Json& tracks, size_t allTracks)
    : mLanes(allTracks) {
    const PluginLog::Pause pause;
    const std::string container = tracks.empty() ? "" : textOf(tracks[0]["format"], "file-format");
    try {
        mReference = std::make_unique<Reference>(path, container);
        match(tracks);
    } catch (const ReferenceError& error) {
        // Where the plug-in has found nothing either, both agree.
        if (!tracks.empty()) addTrack(std::nullopt, error.what());
    }
}

// Track n is the nth stream that makes a track.
void Verifier::match(const Json& tracks) {
    const std::vector<ReferenceStream>& streams = mReference->streams();
    const auto streamText = [&](size_t i) {
        return "libavformat's stream " + std::to_string(streams[i].index);
    };
    for (const Json& track : tracks) {
        const size_t index = track["index"];
        Lane& lane = mLanes[index];
        lane.track = index;
        lane.format = track["format"];
        const std::string mime = textOf(lane.format, host::kKeyMime);
        if (index >= streams.size()) {
            addTrack(index, "libavformat has no stream for it");
        } else if (streams[index].mime != mime) {
            addTrack(index, "is " + mime + ", " + streamText(index) + " is " + streams[index].mime);
        } else {
            lane.compared = true;
            lane.comparesKey = mime != android::MEDIA_MIMETYPE_TEXT_3GPP;
            mReference->select(index);
        }
    }
    for (size_t i = mLanes.size(); i < streams.size(); i++)
        addTrack(std::nullopt, "no track for " + streamText(i) + ", " + streams[i].mime);
}

void Verifier::add(const char* what, const std::string& text, const Json& more) {
    Json difference{{"what", what}, {"text", text}};
    difference.update(more);
    if (++mCount <= kMaxKept) mDifferences.push_back(std::move(difference));
}

void Verifier::addTrack(std::optional<size_t> track, const std::string& text) {
    add("track", text, track ? Json{{"track", *track}} : Json::object());
}

void Verifier::addSample(const Lane& lane, const char* what, const std::string& text, Json more) {
    more.update({{"track", lane.track}, {"sample", lane.next}});
    add(what, text, more);
}

void Verifier::missing(const Lane& lane, const ReferencePacket& packet) {
    addSample(lane, "missing", "missing, libavformat has one at " + secondsText(packet.timeUs),
              {{"reference", packet.timeUs}});
    mReference->pop(lane.track);
}

std::vector<uint8_t> Verifier::wanted(const Lane& lane, const ReferencePacket& packet) const {
    return delivered(lane.format, mReference->streams()[lane.track].bitsPerSample, packet.data);
}

void Verifier::compare(const Lane& lane, const ReferencePacket& packet,
                       const host::Buffer& buffer) {
    const std::string has = ", libavformat has ";
    const int64_t timeUs = timeOf(buffer);
    if (timeUs != packet.timeUs) {
        addSample(lane, "time",
                  "time " + secondsText(timeUs) + has + secondsText(packet.timeUs) + " (" +
                          offsetText(timeUs, packet.timeUs) + ")",
                  {{"plugin", timeUs}, {"reference", packet.timeUs}});
    }
    const int key = buffer.isSync().value_or(false);
    if (lane.comparesKey && key != packet.key) {
        addSample(
                lane, "key",
                key ? "a key sample, libavformat has none" : "no key sample, but libavformat's is",
                {{"plugin", key}, {"reference", packet.key ? 1 : 0}});
    }
    const std::vector<uint8_t> bytes = wanted(lane, packet);
    if (bytes.size() != buffer.size()) {
        addSample(lane, "size", sizeText(buffer.size()) + has + sizeText(bytes.size()),
                  {{"plugin", buffer.size()}, {"reference", bytes.size()}});
    } else if (!isEqual(bytes, buffer)) {
        const auto differs = std::mismatch(bytes.begin(), bytes.end(), buffer.data()).first;
        const auto at = differs - bytes.begin();
        addSample(lane, "payload", "payload differs from byte " + std::to_string(at) + " on",
                  {{"byte", at}});
    }
}

// As a text comparison goes line by line: a sample that libavformat has further on means that those
// before it are missing; one with neither its time nor its contents there is an extra one.
const ReferencePacket* Verifier::find(const Lane& lane, const host::Buffer& buffer) {
    const auto isSame = [&](const ReferencePacket& packet) {
        return packet.timeUs == timeOf(buffer) && isEqual(wanted(lane, packet), buffer);
    };
    const ReferencePacket* packet = mReference->peek(lane.track);
    for (size_t ahead = 1; packet && !isSame(*packet) && ahead <= kLookAhead; ahead++) {
        const ReferencePacket* later = mReference->peek(lane.track, ahead);
        if (!later || !isSame(*later)) continue;
        for (; ahead > 0; ahead--)
            missing(lane, *mReference->peek(lane.track));
        break;
    }
    packet = mReference->peek(lane.track);
    const bool related =
            packet && (packet->timeUs == timeOf(buffer) || isEqual(wanted(lane, *packet), buffer));
    return related ? packet : nullptr;
}

void Verifier::sample(size_t track, const host::Buffer& buffer) {
    const PluginLog::Pause pause;
    Lane& lane = mLanes[track];
    if (!lane.compared) return;
    mCompared++;
    if (const ReferencePacket* packet = find(lane, buffer)) {
        compare(lane, *packet, buffer);
        mReference->pop(lane.track);
    } else {
        const int64_t timeUs = timeOf(buffer);
        addSample(lane, "extra", "at " + secondsText(timeUs) + ", libavformat has no such sample",
                  {{"plugin", timeUs}});
    }
    lane.next++;
}

void Verifier::end(size_t track, int32_t status) {
    const PluginLog::Pause pause;
    const Lane& lane = mLanes[track];
    if (!lane.compared || status == android::OK) return;
    while (const ReferencePacket* packet = mReference->peek(lane.track))
        missing(lane, *packet);
    const int32_t wanted = mReference->failed() ? android::ERROR_IO : android::ERROR_END_OF_STREAM;
    if (status == wanted) return;
    add("end", "ended with " + statusText(status) + ", libavformat has " + statusText(wanted),
        {{"track", track}, {"plugin", status}, {"reference", wanted}});
}

Json Verifier::take() {
    Json verify{{"reference", Reference::library()},
                {"compared", mCompared},
                {"differences", std::move(mDifferences)}};
    if (mCount > kMaxKept) verify["omitted"] = mCount - kMaxKept;
    return verify;
}

std::string differenceText(const Json& difference) {
    std::string text;
    if (difference.contains("track")) text = "track " + difference["track"].dump();
    if (difference.contains("sample")) text += ", sample " + difference["sample"].dump();
    return (text.empty() ? "" : text + ": ") + textOf(difference, "text");
}

}  // namespace orvel::probe
