#include "render/Summary.h"

#include <media/stagefright/MediaErrors.h>

#include "Options.h"
#include "Words.h"
#include "framework/Format.h"
#include "render/TrackLine.h"

namespace orvel::probe {
namespace {

// File-level keys in the order of a page. What is not here shows up among the keys only.
// clang-format off
constexpr const char* kTags[][2] = {
        {"title", "title"}, {"artist", "artist"}, {"album", "album"},
        {"albumartist", "by"}, {"author", "author"}, {"composer", "composer"},
        {"lyricist", "lyricist"}, {"genre", "genre"}, {"year", "year"},
        {"date", "date"}, {"cdtracknum", "track no."}, {"discnum", "disc no."},
        {"compilation", "compilation"}, {"location", "location"}, {"manufacturer", "made by"}};
// clang-format on
constexpr size_t kTagCharacters = 200;
constexpr int64_t kCutUs = 40000;  // what is worth a word

std::string mimeOf(const Json& object) {
    return textOf(objectOf(object, "format"), host::kKeyMime);
}

std::string timeText(double seconds) {
    return seconds < 1 ? formatted("%.1f ms", seconds * 1000) : formatted("%.2f s", seconds);
}

// What the tracks say: an audio-only file in a video container has its codec under "mime".
std::string containerMime(const Json& tree) {
    std::string mime = mimeOf(tree);
    for (const Json& track : listOf(tree, "tracks"))
        if (const std::string own = textOf(track["format"], "file-format"); !own.empty())
            mime = own;
    return mime.empty() ? "unknown" : mime;
}

std::string containerText(const Json& tree) {
    const std::string mime = mimeOf(tree), own = containerMime(tree);
    const int64_t us = intOf(tree, "durationUs", -1);
    return printable(own) +
           (mime.empty() || own == mime ? "" : " (shown as " + printable(mime) + ")") +
           (us < 0 ? "" : ", " + durationText(us));
}

std::string fileText(const Json& tree) {
    const int64_t bytes = intOf(tree, "fileBytes"), us = intOf(tree, "durationUs");
    if (us <= 0) return sizeText(bytes);
    const auto rate =
            static_cast<int64_t>(static_cast<double>(bytes) * 8e6 / static_cast<double>(us));
    return sizeText(bytes) + ", " + bitrateText(rate) + " overall";
}

Row readRow(const Json& track) {
    const auto end = static_cast<int32_t>(intOf(track, "end"));
    const bool limited = end == android::OK, ended = end == android::ERROR_END_OF_STREAM;
    const int64_t count = intOf(track, "count"), keys = intOf(track, "keys");
    std::string text = countText(count, "sample");
    if (count > 0) {
        if (keys < count) text += " (" + countText(keys, "key") + ")";
        text += ", " + sizeText(intOf(track, "bytes")) + ", " +
                secondsText(intOf(track, "firstUs")) + " to " + secondsText(intOf(track, "lastUs"));
    }
    text += ended ? ", end of stream" : limited ? ", stopped at the limit" : ", " + statusText(end);
    if (count > 0) text += "; largest " + sizeText(intOf(track, "largest"));
    if (keys < count && keys > 1) {
        text += ", keys at most " + secondsText(intOf(track, "keyIntervalUs")) + " apart";
    }
    return {"", text, ended || limited ? Tone::Plain : Tone::Bad};
}

// How much later audio begins than video; empty when there are not both.
std::string startOffsetText(const Json& tree) {
    std::map<std::string, int64_t> first;  // by the kind of track
    for (const Json& track : listOf(tree, "tracks")) {
        if (!track.contains("firstUs")) continue;
        const auto found = first.emplace(mimeOf(track).substr(0, 6), INT64_MAX).first;
        found->second = std::min(found->second, intOf(track, "firstUs"));
    }
    if (!first.count("video/") || !first.count("audio/")) return "";
    return "audio begins at " + offsetText(first["audio/"], first["video/"]) + " from video";
}

std::string editsText(const Json& lists) {
    std::string text;
    for (const Json& list : lists) {
        text += text.empty() ? "edit lists, which the plug-in ignores: stream " : "; stream ";
        text += list["stream"].dump() + " moved by " + offsetText(intOf(list, "shiftUs"), 0);
        if (intOf(list, "pieces") > 1) text += ", " + countText(intOf(list, "pieces"), "piece");
        if (intOf(list, "cutUs") > kCutUs) text += ", cut by " + secondsText(intOf(list, "cutUs"));
    }
    return text;
}

/** The rows of a file that was taken. */
class TakenRows {
  public:
    explicit TakenRows(const Json& tree) : mTree(tree) {
        add("taken",
            "by " + printable(textOf(tree, "extractor")) +
                    formatted(", confidence %.2f", tree.value("confidence", 0.0)),
            Tone::Good);
        if (!tree.contains("format")) return;
        add("container", containerText(tree));
        add("file", fileText(tree));
        addTags(tree["format"]);
        addTracks();
        for (const Json& skipped : listOf(tree, "skipped"))
            if (textOf(skipped, "type") == "other")
                add("skipped", textOf(skipped, "codec") + " stream");
        addReading(objectOf(objectOf(tree, "private"), "reading"));
        add("start", startOffsetText(tree));
        add("edits", editsText(listOf(tree, "editLists")));
    }
    Rows take() { return std::move(mRows); }

  private:
    void add(const std::string& label, const std::string& text, Tone tone = Tone::Plain) {
        if (!text.empty()) mRows.push_back({label, text, tone});
    }
    void addTags(const Json& format) {
        for (const auto& [key, label] : kTags)
            add(label, printable(textOf(format, key), kTagCharacters));
        if (format.contains("capture-rate"))
            add("captured", format["capture-rate"].dump() + " fps");
        if (const std::string art = bytesOf(format, "albumart"); !art.empty()) {
            add("cover art", pictureKind(art) + ", " + sizeText(art.size()));
        }
    }
    void addTracks() {
        const Json& tracks = listOf(mTree, "tracks");
        if (tracks.empty() && !mTree.contains("error")) add("tracks", "none", Tone::Warn);
        size_t widest = 0;
        for (const Json& track : tracks)
            widest = std::max(widest, widthOf(printable(mimeOf(track))));
        for (const Json& track : tracks) {
            add("track " + track["index"].dump(),
                padded(printable(mimeOf(track)), widest + 2) + trackLine(track["format"]));
            if (track.contains("count")) mRows.push_back(readRow(track));
        }
    }
    void addReading(const Json& reading) {
        const double seconds = reading.value("seconds", 0.0);
        const int64_t bytes = totalOf(mTree, "bytes");
        if (bytes >= 0 && seconds > 0) {
            add("read",
                countText(totalOf(mTree, "count"), "sample") + ", " + sizeText(bytes) + " in " +
                        timeText(seconds) +
                        formatted(" (%.0f MB/s)", static_cast<double>(bytes) / 1e6 / seconds));
        }
        if (!reading.contains("firstSampleSeconds")) return;
        add("first", "sample after " + timeText(reading["firstSampleSeconds"]) + " and " +
                             sizeText(intOf(reading, "firstSampleBytes")) + " read");
    }

    const Json& mTree;
    Rows mRows;
};

}  // namespace

Tone toneOf(Result result) {
    if (result == Result::Taken) return Tone::Good;
    return result == Result::Warned || result == Result::Declined ? Tone::Warn : Tone::Bad;
}

std::string shortMime(const std::string& mime) {
    static constexpr const char* kShort[][2] = {{"audio/mpeg", "mp3"},
                                                {"audio/mp4a-latm", "aac"},
                                                {"audio/raw", "pcm"},
                                                {"video/mp4v-es", "mpeg4"},
                                                {"text/3gpp-tt", "text"}};
    for (const auto& row : kShort)
        if (mime == row[0]) return row[1];
    std::string_view rest = mime;
    if (const size_t slash = rest.find('/'); slash != rest.npos) rest.remove_prefix(slash + 1);
    for (const std::string_view vendor : {"x-vnd.on2.", "x-", "vnd.rn-", "vnd."}) {
        if (rest.substr(0, vendor.size()) != vendor) continue;
        rest.remove_prefix(vendor.size());
        break;
    }
    return printable(rest);
}

std::string contentText(const Json& tree) {
    if (!tree.contains("format")) return "";
    std::string codecs;
    for (const Json& track : listOf(tree, "tracks"))
        codecs += (codecs.empty() ? "" : "+") + shortMime(mimeOf(track));
    const std::string container = shortMime(containerMime(tree));
    return codecs == container ? codecs : container + " " + (codecs.empty() ? "no tracks" : codecs);
}

std::string lengthText(const Json& tree) {
    const int64_t us = intOf(tree, "durationUs", -1);
    if (us < 0) return "-";
    const std::string text = durationText(us);  // with milliseconds
    return text.substr(0, text.size() - (us < 3600000000 ? 2 : 4));
}

int64_t totalOf(const Json& tree, const char* key) {
    int64_t total = -1;
    for (const Json& track : listOf(tree, "tracks"))
        if (track.contains(key)) total = std::max<int64_t>(total, 0) + intOf(track, key);
    return total;
}

Rows summaryRows(const Json& tree) {
    Rows rows;
    const Json& more = objectOf(tree, "private");
    if (tree.value("taken", false)) {
        rows = TakenRows(tree).take();
    } else if (tree.contains("taken")) {
        rows = {{"declined", printable(textOf(tree, "reason")), Tone::Warn},
                {"file", sizeText(intOf(tree, "fileBytes"))}};
    }
    for (const Json& written : listOf(more, "written"))
        rows.push_back({"wrote", printable(textOf(written, "text"))});
    for (const Json& note : listOf(more, "notes"))
        rows.push_back({"logged", printable(note.get<std::string>(), kTagCharacters)});
    for (const Json& warning : listOf(tree, "warnings"))
        rows.push_back({"warning", printable(textOf(warning, "text")), Tone::Warn});
    if (tree.contains("error"))
        rows.push_back({"error", printable(textOf(tree, "error")), Tone::Bad});
    return rows;
}

const char kSeekColumns[] = "ASKED s  MODE         T LANDED   KEY OFF      TARGET   ";

Rows seekRows(const Json& tree) {
    const auto seconds = [](std::string text) { return text.substr(0, text.size() - 2); };
    Rows rows;
    for (const Json& seek : listOf(tree, "seeks")) {
        if (rows.empty()) rows.push_back({"", kSeekColumns, Tone::Bold});
        const int64_t askedUs = intOf(seek, "timeUs");
        for (const Json& track : listOf(seek, "tracks")) {
            std::string asked = formatted("%-8s %-12s %-2ld", seconds(secondsText(askedUs)).c_str(),
                                          seekModeName(intOf(seek, "mode")), intOf(track, "index"));
            for (const Json& sample : listOf(track, "samples")) {
                const int64_t us = intOf(sample, "timeUs");
                const bool aims = sample.contains("targetTimeUs");
                rows.push_back(
                        {"",
                         asked + formatted(
                                         "%-8s %-3s %-8s %-9s", seconds(secondsText(us)).c_str(),
                                         sample.value("sync", false) ? "key" : "-",
                                         seconds(offsetText(us, askedUs)).c_str(),
                                         aims ? seconds(secondsText(intOf(sample, "targetTimeUs")))
                                                         .c_str()
                                              : "")});
                asked.assign(asked.size(), ' ');
            }
            const auto status = static_cast<int32_t>(intOf(track, "status"));
            const bool ended = status == android::ERROR_END_OF_STREAM;
            if (status == android::OK) continue;
            const std::string why = "no sample: " + (ended ? "end of stream" : statusText(status));
            rows.push_back(
                    {"", asked + formatted("%-31s", why.c_str()), ended ? Tone::Warn : Tone::Bad});
        }
    }
    return rows;
}

Rows keyRows(const Json& format, size_t maxCharacters, size_t maxBytes) {
    Rows rows;
    for (const auto& [key, value] : format.items()) {
        std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
        if (value.is_string()) {
            text = "\"" + printable(value.get<std::string>(), maxCharacters) + "\"";
        } else if (value.is_object()) {
            const std::string hex = textOf(value, "hex");
            const bool cut = maxBytes > 0 && hex.size() > 2 * maxBytes;
            text = sizeText(intOf(value, "size")) + "  " +
                   (cut ? hex.substr(0, 2 * maxBytes) + "..." : hex);
        }
        rows.push_back({printable(key), text});
    }
    return rows;
}

}  // namespace orvel::probe
