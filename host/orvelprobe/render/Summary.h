#pragma once

#include "Report.h"

namespace orvel::probe {

enum class Tone { Plain, Bold, Good, Warn, Bad, Dim };

/** A line of a page, for people, in whatever form; printable, not wrapped. */
struct Row {
    std::string label;  // empty: belongs to the row before it
    std::string text;
    Tone tone = Tone::Plain;
};
using Rows = std::vector<Row>;

/** What a page begins with: the verdict, the file, its tags and tracks, warnings, the error. */
Rows summaryRows(const Json& tree);
/** kSeekColumns and each track of each seek: asked, mode, track, landed, how far off, the target.
 */
Rows seekRows(const Json& tree);
/** The names of these columns. */
extern const char kSeekColumns[];
/** Every key of a format; long values are cut after so many characters or bytes (0: never). */
Rows keyRows(const Json& format, size_t maxCharacters, size_t maxBytes);
/** The steps of --explain and the verdict. */
Rows explainRows(const Json& tree);
/** The differences of --verify. */
Rows verifyRows(const Json& tree);

Tone toneOf(Result result);
/** "avc" for "video/avc", "matroska" for "video/x-matroska". */
std::string shortMime(const std::string& mime);
/** "mp4 avc+eac3" */
std::string contentText(const Json& tree);
/** "0:02.0"; "-" when it is not known. */
std::string lengthText(const Json& tree);
/** The sum of a member over the tracks; -1 when none was read. */
int64_t totalOf(const Json& tree, const char* key);

}  // namespace orvel::probe
