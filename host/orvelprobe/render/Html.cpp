#include "render/Html.h"

#include <sys/random.h>

#include <ctime>

extern "C" {
#include <libavutil/base64.h>
}

#include "Words.h"
#include "process/OutputFile.h"
#include "render/Plots.h"
#include "render/Summary.h"
#include "render/Text.h"
#include "render/TrackLine.h"
#include "verify/Reference.h"

namespace orvel::probe {
namespace {

// Made of page/ at build time: kPageHtml, kPageStyle, kPageScript.
#include "page.inc"

// A bin takes some 15 to 25 bytes: 1 to 2 MB for the whole page.
constexpr size_t kBinsPerPage = 64 << 10, kMinBins = 200;
constexpr size_t kMaxOpenSections = 4;  // with more files each is folded until it is asked for
constexpr size_t kMaxCharacters = 2000, kMaxBytes = 64, kMaxLines = 2000;
constexpr size_t kMaxCover = 4 << 20;

constexpr Result kBadFirst[] = {Result::Crashed,  Result::TimedOut,   Result::Failed,
                                Result::Differs,  Result::Unreadable, Result::Warned,
                                Result::Declined, Result::Taken};

const char* classOf(Tone tone) {
    static constexpr const char* kNames[] = {"", "bold", "good", "warn", "bad", "dim"};
    return kNames[static_cast<size_t>(tone)];
}

// As it may stand in an element or an attribute, untrusted text too.
std::string escaped(std::string_view text) {
    static constexpr char kSpecial[] = "&<>\"'";
    static constexpr const char* kEscapes[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
    std::string html;
    for (const char c : printable(text, kMaxCharacters)) {
        const char* special = strchr(kSpecial, c);
        html += special ? kEscapes[special - kSpecial] : std::string(1, c);
    }
    return html;
}

std::string element(const std::string& tag, const std::string& html) {
    return "<" + tag + ">" + html + "</" + tag.substr(0, tag.find(' ')) + ">";
}

std::string toned(const char* tag, Tone tone, const std::string& text) {
    return element(std::string(tag) + " class=\"" + classOf(tone) + "\"", escaped(text));
}

std::string badge(Result result) {
    return element(std::string("b class=\"badge ") + classOf(toneOf(result)) + "\"",
                   resultName(result));
}

std::string listHtml(const Rows& rows) {
    std::string html;
    for (const Row& row : rows) {
        if (!row.label.empty())
            html += (html.empty() ? "" : "</dd>\n") + element("dt", escaped(row.label)) + "<dd>";
        html += toned("div", row.tone, row.text);
    }
    return html.empty() ? "" : "<dl>" + html + "</dd></dl>\n";
}

std::string keysHtml(const std::string& title, const Json& format) {
    std::string html;
    for (const Row& row : keyRows(format, kMaxCharacters, kMaxBytes))
        html += "<tr><th scope=\"row\">" + escaped(row.label) + "</th>" +
                element("td", escaped(row.text)) + "</tr>\n";
    return element("details",
                   element("summary", title) + "<table class=\"keys\">" + html + "</table>");
}

std::string listingHtml(const std::string& title, Rows rows, const char* tag) {
    std::string html;
    if (rows.size() > kMaxLines) {
        rows.resize(kMaxLines);
        rows.push_back({"", "... and more, as the text output shows"});
    }
    for (const Row& row : rows)
        html += toned("span", row.tone, row.label + (row.label.empty() ? "" : " ") + row.text) +
                "\n";
    return element(tag, element("summary", title) + element("pre", html)) + "\n";
}

std::string coverHtml(const Json& format) {
    const std::string cover = bytesOf(format, "albumart"), kind = pictureKind(cover);
    if (cover.size() > kMaxCover || (kind != "JPEG" && kind != "PNG" && kind != "GIF")) return "";
    std::string base64(AV_BASE64_SIZE(cover.size()), '\0');
    av_base64_encode(base64.data(), static_cast<int>(base64.size()),
                     reinterpret_cast<const uint8_t*>(cover.data()),
                     static_cast<int>(cover.size()));
    base64.pop_back();  // its end of string
    return "<img class=\"cover\" alt=\"cover art\" src=\"data:image/" + kind + ";base64," + base64 +
           "\">\n";
}

std::string plotHtml(const Report& report, size_t maxBins) {
    const Json plot = plotJson(report, maxBins);
    if (plot.is_null()) return "";
    std::string data = dump(plot);
    for (size_t at = 0; (at = data.find('<', at)) != std::string::npos;)
        data.replace(at, 1, "\\u003c");
    return element("figure class=\"plot\"", element("script type=\"application/json\"", data)) +
           "\n";
}

// The template with its {{marks}} filled in, in one pass: what stands in for one is not looked
// into.
std::string filled(std::string_view text, const std::map<std::string_view, std::string>& parts) {
    std::string html;
    for (size_t mark; (mark = text.find("{{")) != std::string_view::npos;) {
        const size_t end = text.find("}}", mark);
        html += text.substr(0, mark);
        html += parts.at(text.substr(mark + 2, end - mark - 2));
        text.remove_prefix(end + 2);
    }
    return html + std::string(text);
}

}  // namespace

void HtmlPage::add(const Report& report) {
    const Json& tree = report.tree;
    const Result result = resultOf(tree);
    const std::string id = "file-" + std::to_string(++mAdded), name = escaped(textOf(tree, "file"));
    const std::string remark = remarkOf(tree);
    if (mAdded == 1) mTitle = name;
    if (mPlugin.empty()) mPlugin = textOf(objectOf(tree, "private"), "plugin");
    const int64_t samples = totalOf(tree, "count");
    const std::string data = " data-result=\"" + std::string(resultName(result)) + "\"";
    Section section;
    section.row =
            element("tr" + data,
                    element("td",
                            element("a href=\"#" + id + "\"", name) +
                                    (remark.empty() ? ""
                                                    : "<br>" + element("small", escaped(remark)))) +
                            element("td", badge(result)) +
                            element("td", escaped(contentText(tree))) +
                            element("td", lengthText(tree)) +
                            element("td", samples < 0 ? "" : countText(samples))) +
            "\n";
    std::string& body = section.body;
    body = element("summary", element("h2", name) + " " + badge(result)) + "\n";
    if (tree.contains("format")) body += coverHtml(tree["format"]);
    Rows summary = summaryRows(tree);
    std::stable_partition(summary.begin(), summary.end(), [](const Row& row) {
        return row.label == "error" || row.label == "warning";
    });
    body += listHtml(summary);
    if (tree.contains("verify")) body += listHtml(verifyRows(tree));
    const size_t plots = std::max<size_t>(1, mFiles * report.samples.size());
    body += plotHtml(report, std::max(kMinBins, kBinsPerPage / plots));
    const Rows seeks = seekRows(tree);
    if (!seeks.empty()) body += listingHtml("Where seeks landed", seeks, "details open");
    if (tree.contains("explain"))
        body += listingHtml("How the plug-in decided", explainRows(tree), "details");
    if (tree.contains("format")) body += keysHtml("Format keys of the file", tree["format"]);
    for (const Json& track : listOf(tree, "tracks"))
        body += keysHtml("Format keys of track " + track["index"].dump(), track["format"]);
    body = element("details class=\"file\" id=\"" + id + "\"" + data +
                           (mFiles <= kMaxOpenSections ? " open" : ""),
                   body) +
           "\n";
    mSections[static_cast<size_t>(result)].push_back(std::move(section));
}

void HtmlPage::addError(const std::string& text) {
    mErrors += toned("p", Tone::Bad, text);
}

// What was asked, and of whom.
std::string HtmlPage::headRows() const {
    Rows rows = {{"command", mOptions.command}};
    for (const auto& [key, value] : mOptions.properties)
        rows.push_back({"property", key + "=" + value});
    if (!mOptions.sourceText.empty()) rows.push_back({"source", mOptions.sourceText, Tone::Warn});
    if (!mPlugin.empty()) rows.push_back({"plug-in", mPlugin});
    rows.push_back({"versions", "orvelprobe " ORVEL_VERSION ", " + Reference::library()});
    const time_t now = time(nullptr);
    char date[64];
    strftime(date, sizeof(date), "%F %T %z", localtime(&now));
    rows.push_back({"date", date});
    return listHtml(rows);
}

void HtmlPage::write(int fd) const {
    std::string rows, sections, counts;
    for (const Result result : kBadFirst) {
        const std::vector<Section>& group = mSections[static_cast<size_t>(result)];
        for (const Section& section : group) {
            rows += section.row;
            sections += section.body;
        }
        if (group.empty()) continue;
        counts += element(std::string(
                                  "button type=\"button\" aria-pressed=\"false\" class=\"badge ") +
                                  classOf(toneOf(result)) + "\" data-filter=\"" +
                                  resultName(result) + "\"",
                          countText(group.size()) + " " + resultName(result)) +
                  " ";
    }
    // Lets the page's own script run and no other: no text of a file can know it.
    uint64_t nonce[2] = {};
    if (getrandom(nonce, sizeof(nonce), 0) != sizeof(nonce)) abort();
    writeAll(fd, filled(kPageHtml, {{"mark", kPageMark},
                                    {"nonce", hexText(nonce, sizeof(nonce))},
                                    {"title", mAdded == 1 ? mTitle : countText(mAdded, "file")},
                                    {"style", kPageStyle},
                                    {"asked", headRows()},
                                    {"errors", mErrors},
                                    {"counts", counts},
                                    {"listed", mFiles > 1 ? "" : " hidden"},
                                    {"rows", rows},
                                    {"sections", sections},
                                    {"script", kPageScript}}));
}

}  // namespace orvel::probe
