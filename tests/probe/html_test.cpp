// The page for browsers: whole, self-contained, harmless, and true to the samples.
#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>
#include <regex>
#include <string_view>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

constexpr char kTwoTracks[] =
        "FAKE\nformat str mime video/fake\ntrack\nformat str mime video/avc\n"
        "format i32 width 1920\nsample 0 1 01020304\nsample 80000 0 01\nsample 40000 0 0102\n"
        "sample 120000 0 01\nsample 1160000 1 010203\ntrack\nformat str mime audio/fake\n"
        "sample 0 1 0102\nsample 20000 1 03\nsample 40000 1 03\nsample 42000 1 03\n";

bool has(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

size_t countOf(const std::string& text, std::string_view part) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        count++;
    return count;
}

// The numbers of a column of the figure-th plot, by the rules of the page's script.
std::vector<int64_t> column(const std::string& page, size_t figure, const std::string& name) {
    size_t at = page.find("<figure");
    for (size_t i = 0; i < figure && at != std::string::npos; i++)
        at = page.find("<figure", at + 1);
    at = page.find("\n" + name + " ", at);
    if (at == std::string::npos) return {};
    at += name.size() + 2;
    const std::string text = page.substr(at, page.find('\n', at) - at);
    constexpr std::string_view kDigits =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<int64_t> values;
    uint64_t bits = 0, value = 0;
    unsigned count = 0, shift = 0;
    for (const char c : text.substr(0, text.find('='))) {
        bits = bits << 6 | kDigits.find(c);
        if ((count += 6) < 8) continue;
        const uint64_t byte = bits >> (count -= 8);
        bits &= (uint64_t{1} << count) - 1;
        value |= (byte & 127) << shift;
        shift += 7;
        if (byte > 127) continue;
        values.push_back(static_cast<int64_t>(value >> 1) ^ -static_cast<int64_t>(value & 1));
        value = shift = 0;
    }
    return values;
}

std::vector<int64_t> sums(std::vector<int64_t> values) {
    std::partial_sum(values.begin(), values.end(), values.begin());
    return values;
}

TEST(Html, everyFileWithItsVerdict_onePageBesideTheUsualOutput) {
    const Workspace work;
    const std::string good = work.file("a", kTwoTracks),
                      crash = work.file("b", std::string(kTwoTracks) + "on read crash\n"),
                      foreign = work.file("c", "x"), hang = work.file("d", "FAKE\non sniff hang\n");
    const std::string path = work.path("page.html");
    const RunResult run = work.probe({"--html", path, "--timeout", "1", "--jobs", "2", good, crash,
                                      foreign, hang, work.path("none")});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.out.rfind("RESULT", 0), 0u) << run.out;  // the table, as without a page
    const std::string page = work.content("page.html");
    size_t at = 0;
    for (const char* text :
         {"5 files: 1 taken, 1 declined, 1 unreadable, 1 crashed, 1 timed out", "id=\"file-1\"",
          ">taken<", "video/avc", "1920", "audio/fake", "id=\"file-2\"", ">crashed<",
          "crashed by signal 11", "while reading, after", "Format keys of track 1", "id=\"file-3\"",
          ">declined<", "id=\"file-4\"", ">timed out<", "id=\"file-5\"", ">unreadable<",
          "</html>\n"}) {
        const size_t found = page.find(text, at);
        EXPECT_NE(found, std::string::npos) << text;
        if (found != std::string::npos) at = found;
    }
    EXPECT_FALSE(std::filesystem::exists(path + ".part"));
}

TEST(Html, plots_holdEverySampleInTheOrderOfTime) {
    const Workspace work;
    const RunResult run =
            work.probe({"--html", work.path("p"), "--seek", "0.05:closest", "--seek", "9", "--json",
                        work.file("a", std::string(kTwoTracks) + "read 160\n")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out[0], '{');
    const std::string page = work.content("p");
    using Values = std::vector<int64_t>;
    EXPECT_EQ(sums(sums(column(page, 0, "time"))), (Values{0, 40000, 80000, 120000, 1160000}));
    EXPECT_EQ(column(page, 0, "min"), (Values{4, 2, 1, 1, 3}));
    EXPECT_EQ(column(page, 0, "span"), (Values{0, 0, 0, 0, 0}));
    EXPECT_EQ(column(page, 0, "keys"), (Values{1, 0, 0, 0, 1}));
    EXPECT_EQ(column(page, 0, "rate"), (Values{8, 3}));
    EXPECT_EQ(column(page, 0, "gap"), (Values{160000}));
    EXPECT_EQ(column(page, 0, "gap-length"), (Values{1000000}));
    EXPECT_EQ(column(page, 1, "overlap"), (Values{42000}));
    EXPECT_EQ(column(page, 1, "overlap-length"), (Values{18000}));
    EXPECT_EQ(column(page, 0, "asked"), (Values{50000, 9000000}));
    EXPECT_EQ(column(page, 0, "landed"), (Values{0, 9000000}));
    EXPECT_EQ(column(page, 0, "known"), (Values{3, 0}));  // the second one landed nowhere
    // 160 bytes were read, each counts once, and 16 delivered: 144 are left, 16 for each sample.
    EXPECT_EQ(sums(column(page, 2, "min")), (Values{140, 122, 105, 88, 71, 54, 36, 19, 0}));
    for (const char* text : {"0.050 s", "closest", "target 0.050 s", "no sample: end of stream",
                             "1 gap (longest 1.000 s at 0.160 s)", "1 overlap"}) {
        EXPECT_TRUE(has(page, text)) << text;
    }
}

TEST(Html, manySamples_areBinnedWithoutLosingTheLargestAndStayBelowThreeMegabytes) {
    const Workspace work;
    const std::string content =
            "FAKE\ntrack\nformat str mime video/avc\nsamples 300000 40000 7\n"
            "sample 12000000000 1 " +
            std::string(2 * 60, '0') + "\nsamples 199999 40000 9\n";
    const RunResult run = work.probe({"--html", work.path("p"), work.file("long", content)});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(has(run.out, "500,000 samples")) << run.out;
    const std::string page = work.content("p");
    EXPECT_LT(page.size(), 3000000u);
    EXPECT_TRUE(has(page, "500,000 samples: each bar is 4, dark"));
    const std::vector<int64_t> span = column(page, 0, "span"), keys = column(page, 0, "keys");
    ASSERT_EQ(span.size(), 125000u);
    EXPECT_EQ(span[75000], 60 - 9);
    EXPECT_EQ(keys[75000], 1);
    EXPECT_EQ(std::accumulate(span.begin(), span.end(), int64_t{0}), 60 - 9);
    const std::vector<int64_t> rate = column(page, 0, "rate");
    EXPECT_EQ(std::accumulate(rate.begin(), rate.end(), int64_t{0}), 300000 * 7 + 60 + 199999 * 9);
    EXPECT_TRUE(has(page, "no gaps, no overlaps"));
}

TEST(Html, textOfFiles_isTextAndNothingElse) {
    const Workspace work;
    const std::string evil =
            "</script></style><script>alert(1)</script><img src=x onerror='alert(2)'>\" "
            "onload=\"x\xE2\x80\xA8\x01\xFF";
    const std::string content = "FAKE\nformat str title " + evil + "\nformat str k<i>ey " + evil +
                                "\ntrack\nformat str mime video/" + evil +
                                "\nformat str language <u>\nsample 0 1 01\nlog 5 " + evil + "\n";
    const std::string folder = work.path("in");
    work.file("in/<b>'&\"\x1e\x1f.fake", content);
    work.file("in/" + std::string("declined\xE2\x80\xAE<b>"), "x");
    const RunResult run =
            work.probe({"--html", work.path("p"), "--explain", "--seek", "0", folder});
    EXPECT_EQ(run.exitCode, 1);
    std::string page = work.content("p");
    EXPECT_TRUE(has(page, "&lt;img src=x onerror=&#39;alert(2)&#39;&gt;&quot; onload=&quot;"));
    EXPECT_TRUE(has(page, "\\x01\\xff"));
    EXPECT_TRUE(has(page, "&lt;b&gt;&#39;&amp;&quot;\\x1e\\x1f.fake"));
    // Only our own elements, with our own attributes.
    const std::regex element("<(/?)([a-z0-9]+)((?: [a-z-]+(?:=\"[^\"<>]*\")?)*)>");
    const size_t script = page.find("<script>") + 1;
    page.erase(script, page.rfind("</script>") - script);  // leaves one "<"
    const std::string known =
            " html head meta title style body header h1 h2 h3 p noscript table thead tbody tr th "
            "td "
            "a br small details summary dl dt dd b bdi span figure figcaption script footer pre ";
    size_t elements = 0;
    for (std::sregex_iterator it(page.begin(), page.end(), element), end; it != end; ++it) {
        elements++;
        EXPECT_TRUE(has(known, " " + (*it)[2].str() + " ")) << it->str();
        const std::string attributes = (*it)[3].str();
        EXPECT_FALSE(has(attributes, " on") || has(attributes, "src=")) << it->str();
        EXPECT_TRUE(!has(attributes, "href=") || has(attributes, "href=\"#file-")) << it->str();
        EXPECT_EQ((*it)[2] == "script" && (*it)[1].length() == 0,
                  attributes == " type=\"text/plain\"");
    }
    EXPECT_EQ(elements + 2, countOf(page, "<"));  // that one and the document type
    EXPECT_FALSE(has(work.content("p"), "http:") || has(work.content("p"), "https:") ||
                 has(work.content("p"), "url(") || has(work.content("p"), "@import"));
}

TEST(Html, unfitPath_isRefusedBeforeAnythingIsRead) {
    const Workspace work;
    const std::string file = work.file("a", kTwoTracks);
    struct Case {
        std::string path;
        const char* says;
    };
    const Case cases[] = {{work.path(""), "is a directory"},
                          {work.path("no/such/folder.html"), "no such folder"},
                          {file + "/page.html", "no such folder"},
                          {"/dev/null", "not a regular file"},
                          {file, "is a file to be read"}};
    for (const Case& one : cases) {
        const RunResult run = work.probe({"--html", one.path, file});
        EXPECT_EQ(run.exitCode, 2) << one.path;
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(has(run.err, one.says)) << run.err;
    }
    EXPECT_EQ(work.content("a"), kTwoTracks);
}

TEST(Html, olderPage_staysWhenTheRunComesToNothing) {
    const Workspace work;
    const std::string page = work.file("page.html", "older");
    const std::string file = work.file("a", kTwoTracks);
    EXPECT_EQ(work.probe({"--html", page, "--plugin", work.path("none"), file}).exitCode, 2);
    EXPECT_EQ(work.content("page.html"), "older");
    EXPECT_EQ(work.probe({"--html", page, file}).exitCode, 0);
    EXPECT_EQ(work.content("page.html").rfind("<!DOCTYPE html>", 0), 0u);
}

}  // namespace
}  // namespace orvel::probe::test
