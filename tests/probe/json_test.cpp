// The JSON that other programs are written against.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kTwoTracks[] =
        "FAKE\n"
        "format str mime video/fake\n"
        "format str title A \xFFtitle\x01 with \"quotes\"\n"
        "format f32 capture-rate 29.97\n"
        "format buf albumart 89504e47\n"
        "track\n"
        "format str mime video/avc\n"
        "format i32 width 1920\n"
        "format rect crop 1,2,3,-4\n"
        "format i64 durationUs 9000000000\n"
        "sample 66667 1 000102\n"
        "sample 133333 0 \n"
        "sample 100000 0 616263\n"
        "track\n"
        "format str mime audio/fake\n"
        "sample 0 1 616263\n"
        "sample 90000 1 00\n"
        "sample 110000 1 00\n"
        "end -1004\n";

Json probeJson(const Workspace& work, std::vector<std::string> options, int exitCode) {
    options.insert(options.end(), {"--json", work.file("f", kTwoTracks)});
    const RunResult run = work.probe(options);
    EXPECT_EQ(run.exitCode, exitCode) << run.err;
    return Json::parse(run.out);
}

TEST(JsonOutput, shape_isTheOneThatIsPromised) {
    const Workspace work;
    const Json object = probeJson(work, {"--samples"}, 3);
    // Byte by byte: order of the keys, number formats and spelling are what others rely on.
    const std::string expected =
            R"({"file":")" + work.path("f") +
            R"(","taken":true,"confidence":0.9,"extractor":"FakeExtractor","format":{)"
            R"("albumart":{"size":4,"hex":"89504e47"},"capture-rate":29.97,"mime":"video/fake",)"
            R"("property":"unset","source-reads":2,"source-size":)" +
            std::to_string(sizeof(kTwoTracks) - 1) +
            R"(,"title":"A �title\u0001 with \"quotes\""},"tracks":[{"index":0,"format":{)"
            R"("crop":[1,2,3,-4],"durationUs":9000000000,"mime":"video/avc","width":1920},)"
            R"("count":3,"bytes":6,"end":-1011,"samples":[)"
            R"({"timeUs":66667,"size":3,"sync":true,"md5":"b95f67f61ebb03619622d798f45fc2d3"},)"
            R"({"timeUs":133333,"size":0,"sync":false,"md5":"d41d8cd98f00b204e9800998ecf8427e"},)"
            R"({"timeUs":100000,"size":3,"sync":false,"md5":"900150983cd24fb0d6963f7d28e17f72"}]},)"
            R"({"index":1,"format":{"mime":"audio/fake"},"count":3,"bytes":5,"end":-1004,"samples":[)"
            R"({"timeUs":0,"size":3,"sync":true,"md5":"900150983cd24fb0d6963f7d28e17f72"},)"
            R"({"timeUs":90000,"size":1,"sync":true,"md5":"93b885adfe0da089cdf634904fd59f71"},)"
            R"({"timeUs":110000,"size":1,"sync":true,"md5":"93b885adfe0da089cdf634904fd59f71"}]}],)"
            R"("error":)" +
            object["error"].dump() + "}\n";
    EXPECT_EQ(work.probe({"--json", "--samples", work.path("f")}).out, expected);
}

TEST(JsonOutput, membersComeWithTheirOptions) {
    const Workspace work;
    Json object = probeJson(work, {}, 0);
    EXPECT_FALSE(object["tracks"][0].contains("count"));
    object = probeJson(work, {"--read", "--track", "0"}, 0);
    ASSERT_EQ(object["tracks"].size(), 1u);
    EXPECT_EQ(object["tracks"][0]["count"], 3);
    EXPECT_FALSE(object["tracks"][0].contains("samples"));
    object = probeJson(work, {"--samples", "--limit", "2", "--track", "1", "--track", "0"}, 0);
    for (const Json& track : object["tracks"]) {
        EXPECT_EQ(track["count"], 2);
        EXPECT_EQ(track["samples"].size(), 2u);
        EXPECT_EQ(track["end"], 0);
    }
    object = probeJson(work, {"--property", "test.value=a=b", "--source", "short=50,size=unknown"},
                       0);
    EXPECT_EQ(object["format"]["property"], "a=b");
    EXPECT_EQ(object["format"]["source-reads"], (sizeof(kTwoTracks) - 1 + 49) / 50 + 1);
    EXPECT_EQ(object["format"]["source-size"], -1);
}

TEST(JsonOutput, seeks_listEachTrackAfterEachSeekAndNothingElse) {
    const Workspace work;
    const Json object = probeJson(work,
                                  {"--seek", "0.1:closest", "--seek", "95000us", "--seek",
                                   "-1:next", "--seek=7", "--read"},
                                  0);
    EXPECT_FALSE(object["tracks"][0].contains("count"));
    ASSERT_EQ(object["seeks"].size(), 4u);
    EXPECT_EQ(object["seeks"][0].dump(),
              R"({"timeUs":100000,"mode":3,"tracks":[{"index":0,"status":0,"samples":[)"
              R"({"timeUs":66667,"size":3,"sync":true,"md5":"b95f67f61ebb03619622d798f45fc2d3",)"
              R"("targetTimeUs":100000}]},{"index":1,"status":0,"samples":[)"
              R"({"timeUs":90000,"size":1,"sync":true,"md5":"93b885adfe0da089cdf634904fd59f71",)"
              R"("targetTimeUs":100000}]}]})");
    EXPECT_EQ(object["seeks"][1]["timeUs"], 95000);
    EXPECT_EQ(object["seeks"][1]["mode"], 2);
    EXPECT_EQ(object["seeks"][2]["timeUs"], -1000000);
    EXPECT_EQ(object["seeks"][2]["mode"], 1);
    EXPECT_EQ(object["seeks"][3]["tracks"][0].dump(), R"({"index":0,"status":-1011,"samples":[]})");

    const Json more = probeJson(work, {"--seek", "0.1", "--limit", "2", "--track", "0"}, 0);
    ASSERT_EQ(more["seeks"][0]["tracks"].size(), 1u);
    EXPECT_EQ(more["seeks"][0]["tracks"][0]["samples"].size(), 2u);
}

}  // namespace
}  // namespace orvel::probe::test
