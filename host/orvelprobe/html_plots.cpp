#include "html_plots.h"

#include <media/stagefright/MediaErrors.h>
#include <strings.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "html_text.h"
#include "text.h"
#include "track_plot.h"

namespace orvel::probe {
namespace {

// A figure whose attributes are single numbers and whose columns are many.
class Figure {
  public:
    explicit Figure(const char* kind) {
        mHead = "<figure class=\"plot\" data-kind=\"" + std::string(kind) + "\"";
    }
    void number(const char* name, int64_t value) {
        mHead += " data-" + std::string(name) + "=\"" + std::to_string(value) + "\"";
    }
    void column(const char* name, const std::vector<int64_t>& values) {
        mColumns += std::string(name) + " " + probe::column(values) + "\n";
    }
    std::string html(const std::string& caption) const {
        return mHead + "><figcaption>" + caption + "</figcaption>\n<script type=\"text/plain\">\n" +
               mColumns + "</script></figure>\n";
    }

  private:
    std::string mHead, mColumns;
};

template <typename Items, typename Get>
std::vector<int64_t> valuesOf(const Items& items, Get get) {
    std::vector<int64_t> values;
    values.reserve(items.size());
    for (const auto& item : items)
        values.push_back(static_cast<int64_t>(get(item)));
    return values;
}

// What is left when each number is told from the one before it.
std::vector<int64_t> differences(std::vector<int64_t> values) {
    std::adjacent_difference(values.begin(), values.end(), values.begin());
    return values;
}

void addRanges(const char* at, const char* length, const std::vector<TimeRange>& ranges,
               Figure* figure) {
    figure->column(at, differences(valuesOf(ranges, [](auto& range) { return range.fromUs; })));
    figure->column(length, valuesOf(ranges, [](auto& range) { return range.toUs - range.fromUs; }));
}

std::string timesText(const TrackPlot& plot, bool continuous, bool isVideo) {
    if (plot.typicalStepUs == 0) return "";
    std::string text = " Times: typical step " + secondsText(plot.typicalStepUs);
    if (continuous) {
        text += ", " + (plot.gapCount == 0 ? "no gaps" : countText(plot.gapCount, "gap"));
        if (plot.gapCount > 0) {
            text += " (longest " + secondsText(plot.longestGapUs) + " at " +
                    secondsText(plot.longestGapAtUs) + ")";
        }
        text += ", " +
                (plot.overlapCount == 0 ? "no overlaps" : countText(plot.overlapCount, "overlap"));
    }
    // Where frames are reordered that is as it should be.
    if (!isVideo && plot.backwardCount > 0) {
        text += "; " + countText(plot.backwardCount, "sample") + " read behind a later one";
    }
    text += ".";
    if (plot.gapCount > 0) text += " Gap: a step above 1.5 typical ones.";
    if (plot.overlapCount > 0) text += " Overlap: a step below half a typical one.";
    if (plot.gapCount > plot.gaps.size() || plot.overlapCount > plot.overlaps.size()) {
        text += " Only the first " + countText(std::max(plot.gaps.size(), plot.overlaps.size())) +
                " are drawn.";
    }
    return text;
}

std::string barsText(const TrackPlot& plot, const ReadReport& read) {
    std::string text = countText(read.count, "sample") + ": ";
    text += plot.samplesPerBin == 1
                    ? "each bar is one."
                    : "each bar is " + countText(plot.samplesPerBin) +
                              ", dark up to the smallest, light up to the largest of them.";
    if (read.count > 0 && read.syncCount == read.count) text += " Every sample is a key sample.";
    if (plot.rateStepUs > 1000000) {
        text += " Bitrate: average over " + secondsText(plot.rateStepUs) + ".";
    }
    return text;
}

// Seeks of this track: what was asked, where it landed, which target it named. The times of a seek
// that has none are those of the seek itself.
void addSeeks(const Report& report, size_t trackIndex, Figure* figure) {
    const auto nearTime = [](int64_t us) {
        return std::clamp(us, -kMaxPlotTimeUs, kMaxPlotTimeUs);
    };
    std::vector<int64_t> asked, landed, target, known;
    for (const SeekReport& seek : report.seeks) {
        for (const SeekTrackReport& track : seek.tracks) {
            if (track.index != trackIndex) continue;
            const Sample* first = track.samples.empty() ? nullptr : &track.samples[0];
            const bool aims = first && first->targetTimeUs;
            asked.push_back(nearTime(seek.timeUs));
            landed.push_back(nearTime(first ? first->timeUs : seek.timeUs));
            target.push_back(nearTime(aims ? *first->targetTimeUs : seek.timeUs));
            known.push_back((first ? 1 : 0) + (aims ? 2 : 0));
        }
    }
    figure->column("asked", asked);
    figure->column("landed", landed);
    figure->column("target", target);
    figure->column("known", known);
}

}  // namespace

std::string trackPlotHtml(const Report& report, const TrackReport& track, size_t maxBins) {
    if (track.plot.empty()) return "";
    const std::string mime = track.format.text(host::kKeyMime);
    const bool isVideo = strncasecmp(mime.c_str(), "video/", 6) == 0;
    const bool continuous = isVideo || strncasecmp(mime.c_str(), "audio/", 6) == 0;
    const TrackPlot plot = plotTrack(track.plot, maxBins, continuous);
    Figure figure("track");
    figure.number("per-bin", static_cast<int64_t>(plot.samplesPerBin));
    figure.number("end", plot.endUs);
    figure.number("step", plot.typicalStepUs);
    figure.number("all-keys", track.read->syncCount == track.read->count);
    figure.number("times", continuous);
    figure.number("rate-start", plot.rateStartUs);
    figure.number("rate-step", plot.rateStepUs);
    figure.column(
            "time",
            differences(differences(valuesOf(plot.bins, [](auto& bin) { return bin.timeUs; }))));
    figure.column("min", valuesOf(plot.bins, [](auto& bin) { return bin.minBytes; }));
    figure.column("span",
                  valuesOf(plot.bins, [](auto& bin) { return bin.maxBytes - bin.minBytes; }));
    figure.column("keys", valuesOf(plot.bins, [](auto& bin) { return bin.syncCount; }));
    figure.column("rate", valuesOf(plot.rateBytes, [](uint64_t bytes) { return bytes; }));
    addRanges("gap", "gap-length", plot.gaps, &figure);
    addRanges("overlap", "overlap-length", plot.overlaps, &figure);
    addSeeks(report, track.index, &figure);
    return figure.html(escaped(barsText(plot, *track.read) + timesText(plot, continuous, isVideo)));
}

std::string cachePlotHtml(const Report& report, size_t maxBins) {
    std::vector<int64_t> ahead = report.sourceAhead;
    if (ahead.empty()) return "";
    const int64_t left = ahead.back();
    // With all samples read nothing is cached any more. Less than none is left where samples are
    // larger than what they are made of; how much larger each of them is cannot be told.
    const bool spread =
            left >= 0 &&
            std::all_of(report.tracks.begin(), report.tracks.end(), [](const TrackReport& track) {
                return track.read && track.read->end == android::ERROR_END_OF_STREAM;
            });
    for (size_t i = 0; spread && i < ahead.size(); i++) {
        ahead[i] -= std::llround(static_cast<double>(left) * static_cast<double>(i + 1) /
                                 static_cast<double>(ahead.size()));
    }
    size_t perBin = 1;
    const std::vector<Band> bands = bandsOf(ahead, maxBins, &perBin);
    Figure figure("ahead");
    figure.number("per-bin", static_cast<int64_t>(perBin));
    figure.number("samples", static_cast<int64_t>(ahead.size()));
    figure.column("min", differences(valuesOf(bands, [](auto& band) { return band.min; })));
    figure.column("span", valuesOf(bands, [](auto& band) { return band.max - band.min; }));
    const std::string leftText =
            (left < 0 ? "-" : "") + sizeText(static_cast<uint64_t>(left < 0 ? -left : left));
    std::string text =
            "What the plug-in holds cannot be seen from outside. Shown instead, after each sample "
            "that was read: the bytes of the file that the extractor has got from the source by "
            "then, each counted once, less the bytes delivered as samples. ";
    if (spread) {
        text += "Of the " + leftText +
                " that were left at the end (headers, container overhead, unread tracks) each "
                "sample has taken an equal share with it: an estimate that ends at zero, too high "
                "at first by what stands in front of the samples.";
    } else {
        text += "Headers, container overhead and unread tracks are in it, and samples that are "
                "larger than what they are made of take away from it. After the last sample: " +
                leftText + ".";
    }
    if (perBin > 1) text += " Each bar is " + countText(perBin) + " samples, least to most.";
    return figure.html(escaped(text));
}

}  // namespace orvel::probe
