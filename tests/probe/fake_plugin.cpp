// A plug-in whose "media files" are scripts: what it reports, delivers and does wrong stands in the
// file, a line each, from "FAKE" on. What stands in front of that is for other readers.
//
//   format TYPE KEY VALUE      an entry of the file's format, after "track" of that track's;
//                              TYPE: i32 i64 f32 str rect (L,T,R,B) buf (hexadecimal)
//   track                      begins a track
//   sample TIMEUS KEY HEX      KEY: 0 or 1
//   samples COUNT STEPUS SIZE  so many at once, none a key, behind those before
//   end STATUS                 what the read behind the last sample returns; -1011 if absent
//   read BYTES                 read twice from the beginning when the extractor is made
//   log PRIORITY TEXT          logged while it decides, under the tag FFmpegObject
//   bit N                      it is taken only if mm.enable.orvel_parser enables this container
//   on STEP DEED               STEP: sniff create start read (behind the last sample) stop free;
//                              DEED: crash hang exit print, for sniff also decline
#include <android/log.h>
#include <cutils/properties.h>
#include <media/MediaExtractorPluginApi.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/NdkMediaErrorPriv.h>
#include <media/stagefright/MediaErrors.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace android;

struct FakeSample {
    int64_t timeUs;
    bool sync;
    std::string data;
};
struct FakeTrack {
    std::vector<std::string> format;
    std::vector<FakeSample> samples;
    int32_t end = ERROR_END_OF_STREAM;
};
struct Script {
    std::vector<std::string> format;
    std::vector<FakeTrack> tracks;
    std::map<std::string, std::string> deeds;
    std::vector<std::pair<int, std::string>> log;
    int bit = 0;
    int reads = 0;
    size_t readInCreate = 0;
    off64_t size = -1;
};

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

void setEntry(AMediaFormat* format, const std::string& line) {
    std::istringstream in(line);
    std::string type, key, value;
    in >> type >> key >> std::ws;
    std::getline(in, value);
    if (type == "i32") AMediaFormat_setInt32(format, key.c_str(), std::stoi(value));
    if (type == "i64") AMediaFormat_setInt64(format, key.c_str(), std::stoll(value));
    if (type == "f32") AMediaFormat_setFloat(format, key.c_str(), std::stof(value));
    if (type == "str") AMediaFormat_setString(format, key.c_str(), value.c_str());
    if (type == "buf") {
        const std::string bytes = fromHex(value);
        AMediaFormat_setBuffer(format, key.c_str(), bytes.data(), bytes.size());
    }
    int32_t rect[4];
    if (type == "rect" &&
        sscanf(value.c_str(), "%d,%d,%d,%d", &rect[0], &rect[1], &rect[2], &rect[3]) == 4) {
        AMediaFormat_setRect(format, key.c_str(), rect[0], rect[1], rect[2], rect[3]);
    }
}

std::shared_ptr<Script> parse(CDataSource* source) {
    auto script = std::make_shared<Script>();
    std::string text;
    char buffer[4096];
    ssize_t length = 0;
    do {
        length = source->readAt(source->handle, static_cast<off64_t>(text.size()), buffer,
                                sizeof(buffer));
        script->reads++;
        if (length > 0) text.append(buffer, static_cast<size_t>(length));
    } while (length > 0);
    const size_t begin = text.find("FAKE\n");
    if (length < 0 || begin == std::string::npos) return nullptr;
    text.erase(0, begin);
    source->getSize(source->handle, &script->size);
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        FakeTrack* track = script->tracks.empty() ? nullptr : &script->tracks.back();
        if (word == "format") {
            (track ? track->format : script->format).push_back(line.substr(7));
        } else if (word == "track") {
            script->tracks.emplace_back();
        } else if (word == "sample") {
            FakeSample sample;
            std::string hex;
            words >> sample.timeUs >> sample.sync >> hex;
            sample.data = fromHex(hex);
            track->samples.push_back(sample);
        } else if (word == "samples") {
            size_t count = 0, size = 0;
            int64_t stepUs = 0;
            words >> count >> stepUs >> size;
            int64_t timeUs = track->samples.empty() ? 0 : track->samples.back().timeUs + stepUs;
            for (; count > 0; count--, timeUs += stepUs)
                track->samples.push_back({timeUs, false, std::string(size, '\0')});
        } else if (word == "end") {
            words >> track->end;
        } else if (word == "log") {
            int priority = 0;
            words >> priority >> std::ws;
            std::string text;
            std::getline(words, text);
            script->log.emplace_back(priority, text);
        } else if (word == "read") {
            words >> script->readInCreate;
        } else if (word == "bit") {
            words >> script->bit;
        } else if (word == "on") {
            std::string step, deed;
            words >> step >> deed;
            script->deeds[step] = deed;
        }
    }
    return script;
}

void act(const Script& script, const char* step) {
    const auto deed = script.deeds.find(step);
    if (deed == script.deeds.end()) return;
    if (deed->second == "crash") raise(SIGSEGV);
    if (deed->second == "exit") _exit(0);
    if (deed->second == "print") puts("a library that writes to stdout");
    while (deed->second == "hang")
        pause();
}

class Track : public MediaTrackHelper {
  public:
    Track(std::shared_ptr<Script> script, size_t index)
        : mScript(std::move(script)), mTrack(mScript->tracks[index]) {}
    media_status_t start() override {
        act(*mScript, "start");
        mGroupHelper->add_buffer(64);
        return AMEDIA_OK;
    }
    media_status_t stop() override {
        act(*mScript, "stop");
        return AMEDIA_OK;
    }
    media_status_t getFormat(AMediaFormat* format) override {
        for (const std::string& line : mTrack.format)
            setEntry(format, line);
        return AMEDIA_OK;
    }
    // Seeks land on the last key sample at or before the time; mode 3 names the time as target.
    media_status_t read(MediaBufferHelper** out, const ReadOptions* options) override {
        int64_t seekUs = 0;
        ReadOptions::SeekMode mode{};
        const bool seek = options->getSeekTo(&seekUs, &mode);
        if (seek) {
            mNext = 0;
            int64_t lastUs = -1;
            for (size_t i = 0; i < mTrack.samples.size(); i++) {
                if (mTrack.samples[i].sync && mTrack.samples[i].timeUs <= seekUs) mNext = i;
                lastUs = std::max(lastUs, mTrack.samples[i].timeUs);
            }
            if (seekUs > lastUs) return translate_error(ERROR_END_OF_STREAM);
        }
        if (mNext >= mTrack.samples.size()) {
            act(*mScript, "read");
            return translate_error(mTrack.end);
        }
        const FakeSample& sample = mTrack.samples[mNext++];
        const media_status_t status = mGroupHelper->acquire_buffer(out, false, sample.data.size());
        if (status != AMEDIA_OK) return status;
        memcpy((*out)->data(), sample.data.data(), sample.data.size());
        (*out)->set_range(0, sample.data.size());
        AMediaFormat_setInt64((*out)->meta_data(), "timeUs", sample.timeUs);
        if (sample.sync) AMediaFormat_setInt32((*out)->meta_data(), "is-sync-frame", 1);
        if (seek && mode == 3) AMediaFormat_setInt64((*out)->meta_data(), "target-time", seekUs);
        return AMEDIA_OK;
    }

  private:
    const std::shared_ptr<Script> mScript;
    const FakeTrack& mTrack;
    size_t mNext = 0;
};

class Extractor : public MediaExtractorPluginHelper {
  public:
    explicit Extractor(std::shared_ptr<Script> script) : mScript(std::move(script)) {}
    ~Extractor() override { act(*mScript, "free"); }
    size_t countTracks() override { return mScript->tracks.size(); }
    MediaTrackHelper* getTrack(size_t index) override {
        return index < mScript->tracks.size() ? new Track(mScript, index) : nullptr;
    }
    media_status_t getTrackMetaData(AMediaFormat* meta, size_t index, uint32_t) override {
        for (const std::string& line : mScript->tracks[index].format)
            setEntry(meta, line);
        return AMEDIA_OK;
    }
    media_status_t getMetaData(AMediaFormat* meta) override {
        for (const std::string& line : mScript->format)
            setEntry(meta, line);
        char value[PROPERTY_VALUE_MAX];
        property_get("test.value", value, "unset");
        AMediaFormat_setString(meta, "property", value);
        AMediaFormat_setInt32(meta, "source-reads", mScript->reads);
        AMediaFormat_setInt64(meta, "source-size", mScript->size);
        return AMEDIA_OK;
    }
    const char* name() override { return "FakeExtractor"; }

  private:
    const std::shared_ptr<Script> mScript;
};

CMediaExtractor* create(CDataSource* source, void* meta) {
    auto script = *static_cast<std::shared_ptr<Script>*>(meta);
    std::string buffer(script->readInCreate, '\0');
    for (int i = 0; i < 2 && !buffer.empty(); i++)
        source->readAt(source->handle, 0, buffer.data(), buffer.size());
    act(*script, "create");
    __android_log_print(ANDROID_LOG_INFO, "Fake", "fake extractor created");
    return wrap(new Extractor(std::move(script)));
}

CreatorFunc sniff(CDataSource* source, float* confidence, void** meta, FreeMetaFunc* freeMeta) {
    auto script = parse(source);
    if (!script) return nullptr;
    for (const auto& [priority, text] : script->log)
        __android_log_print(priority, "FFmpegObject", "%s", text.c_str());
    if (script->bit != 0) {
        char mask[PROPERTY_VALUE_MAX];
        property_get("mm.enable.orvel_parser", mask, "0");
        const bool enabled = (atoi(mask) & script->bit) != 0;
        __android_log_print(ANDROID_LOG_INFO, "FFmpegObject",
                            "mime:video/fake, mediaFlag:0x%x, finalScore:%d",
                            enabled ? script->bit : 0, enabled ? 100 : 0);
        if (!enabled) return nullptr;
    }
    act(*script, "sniff");
    if (script->deeds["sniff"] == "decline") return nullptr;
    *confidence = 0.9f;
    *meta = new std::shared_ptr<Script>(std::move(script));
    *freeMeta = [](void* held) { delete static_cast<std::shared_ptr<Script>*>(held); };
    return create;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) ExtractorDef GETEXTRACTORDEF() {
    static const char* kTypes[] = {"fake", nullptr};
    return {EXTRACTORDEF_VERSION, {{1}}, 1, "Fake Extractor", {.v3 = {sniff, kTypes}}};
}
