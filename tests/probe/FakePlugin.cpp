// A plug-in whose "media files" are scripts: what it reports, delivers and does wrong stands in the
// file, a line each, from "FAKE" on. What stands in front of that is for other readers.
//
//   format TYPE KEY VALUE      an entry of the file's format, after "track" of that track's;
//                              TYPE: i32 i64 f32 str rect (L,T,R,B) buf (hexadecimal)
//   track                      begins a track
//   sample TIMEUS KEY HEX      KEY: 0 or 1
//   samples COUNT STEPUS SIZE  so many at once, none a key, after those before
//   end STATUS                 what the read after the last sample returns; -1011 if absent
//   log PRIORITY TEXT          logged while it decides, under the tag FFmpegObject
//   bit N                      it is taken only if mm.enable.orvel_parser enables this container
//   on STEP DEED               STEP: sniff start read (after the last sample) free;
//                              DEED: crash hang exit print, linger (2 s), for sniff also decline
#include <android/log.h>
#include <cutils/properties.h>
#include <media/MediaExtractorPluginApi.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/NdkMediaErrorPriv.h>
#include <media/stagefright/MediaErrors.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
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
    std::shared_ptr<AMediaFormat> format{AMediaFormat_new(), AMediaFormat_delete};
    std::vector<FakeSample> samples;
    int32_t end = ERROR_END_OF_STREAM;
};
struct Script {
    std::vector<FakeTrack> tracks{1};  // the first has the file's format only
    std::map<std::string, std::string> deeds;
    std::vector<std::pair<int, std::string>> log;
    int bit = 0;
};

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

void setEntry(AMediaFormat* format, std::istream& in) {
    std::string type, name, value;
    in >> type >> name >> std::ws;
    std::getline(in, value);
    const char *key = name.c_str(), *text = value.c_str();
    int32_t at[4];
    if (type == "i32") AMediaFormat_setInt32(format, key, atoi(text));
    if (type == "i64") AMediaFormat_setInt64(format, key, atoll(text));
    if (type == "f32") AMediaFormat_setFloat(format, key, std::stof(value));
    if (type == "str") AMediaFormat_setString(format, key, text);
    if (type == "buf") AMediaFormat_setBuffer(format, key, fromHex(value).data(), value.size() / 2);
    if (sscanf(text, "%d,%d,%d,%d", &at[0], &at[1], &at[2], &at[3]) == 4)
        AMediaFormat_setRect(format, key, at[0], at[1], at[2], at[3]);
}

void readLine(const std::string& line, Script* script) {
    std::istringstream words(line);
    std::string word, text;
    words >> word;
    FakeTrack& track = script->tracks.back();
    auto& samples = track.samples;
    if (word == "format") setEntry(track.format.get(), words);
    if (word == "track") script->tracks.emplace_back();
    if (word == "end") words >> track.end;
    if (word == "bit") words >> script->bit;
    if (word == "sample") {
        FakeSample& sample = samples.emplace_back();
        words >> sample.timeUs >> sample.sync >> text;
        sample.data = fromHex(text);
    } else if (word == "samples") {
        int64_t stepUs = 0;
        size_t count = 0, size = 0;
        for (words >> count >> stepUs >> size; count > 0; count--)
            samples.push_back({samples.empty() ? 0 : samples.back().timeUs + stepUs, false,
                               std::string(size, '\0')});
    } else if (word == "log") {
        script->log.emplace_back(line[4] - '0', line.substr(6));
    } else if (word == "on") {
        words >> text >> script->deeds[text];
    }
}

std::shared_ptr<Script> parse(CDataSource* source) {
    std::string text(1 << 20, '\0');
    text.resize(static_cast<size_t>(
            std::max<ssize_t>(source->readAt(source->handle, 0, text.data(), text.size()), 0)));
    const size_t begin = text.find("FAKE\n");
    if (begin == std::string::npos) return nullptr;
    auto script = std::make_shared<Script>();
    std::istringstream in(text.substr(begin));
    for (std::string line; std::getline(in, line);)
        readLine(line, script.get());
    return script;
}

void act(const Script& script, const char* step) {
    const auto deed = script.deeds.find(step);
    if (deed == script.deeds.end()) return;
    if (deed->second == "crash") raise(SIGSEGV);
    if (deed->second == "exit") _exit(0);
    if (deed->second == "print") puts("a library that writes to stdout");
    if (deed->second == "linger") sleep(2);
    while (deed->second == "hang")
        pause();
}

class Track : public MediaTrackHelper {
  public:
    Track(std::shared_ptr<Script> script, size_t index)
        : mScript(std::move(script)), mTrack(mScript->tracks[index + 1]) {}
    media_status_t start() override {
        act(*mScript, "start");
        mGroupHelper->add_buffer(64);
        return AMEDIA_OK;
    }
    media_status_t stop() override { return AMEDIA_OK; }
    media_status_t getFormat(AMediaFormat* format) override {
        return AMediaFormat_copy(format, mTrack.format.get());
    }
    // Seeks land on the last key sample at or before the time; mode 3 names the time as target.
    media_status_t read(MediaBufferHelper** out, const ReadOptions* options) override {
        int64_t seekUs = 0;
        ReadOptions::SeekMode mode{};
        const bool seek = options->getSeekTo(&seekUs, &mode);
        const std::vector<FakeSample>& samples = mTrack.samples;
        for (size_t i = 0; seek && i < samples.size(); i++)
            if (i == 0 || (samples[i].sync && samples[i].timeUs <= seekUs)) mNext = i;
        if (seek && seekUs > samples.back().timeUs) return translate_error(ERROR_END_OF_STREAM);
        if (mNext >= samples.size()) {
            act(*mScript, "read");
            return translate_error(mTrack.end);
        }
        const FakeSample& sample = samples[mNext++];
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
    size_t countTracks() override { return mScript->tracks.size() - 1; }
    MediaTrackHelper* getTrack(size_t index) override { return new Track(mScript, index); }
    media_status_t getTrackMetaData(AMediaFormat* meta, size_t index, uint32_t) override {
        return AMediaFormat_copy(meta, mScript->tracks[index + 1].format.get());
    }
    media_status_t getMetaData(AMediaFormat* meta) override {
        return AMediaFormat_copy(meta, mScript->tracks[0].format.get());
    }
    const char* name() override { return "FakeExtractor"; }

  private:
    const std::shared_ptr<Script> mScript;
};

CMediaExtractor* create(CDataSource*, void* meta) {
    return wrap(new Extractor(*static_cast<std::shared_ptr<Script>*>(meta)));
}

CreatorFunc sniff(CDataSource* source, float* confidence, void** meta, FreeMetaFunc* freeMeta) {
    auto script = parse(source);
    if (!script) return nullptr;
    for (const auto& [priority, text] : script->log)
        __android_log_print(priority, "FFmpegObject", "%s", text.c_str());
    char mask[PROPERTY_VALUE_MAX];
    property_get("mm.enable.orvel_parser", mask, "0");
    if (script->bit != 0 && (atoi(mask) & script->bit) == 0) {
        __android_log_write(ANDROID_LOG_INFO, "FFmpegObject",
                            "mime:(null), mediaFlag:0x0, finalScore:0");
        return nullptr;
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
