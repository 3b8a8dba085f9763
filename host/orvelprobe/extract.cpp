#include "extract.h"

#include <media/stagefright/foundation/MediaDefs.h>
#include <strings.h>

#include <cerrno>
#include <cstring>

#include "extract_forms.h"

namespace orvel::probe {

OutputFile::OutputFile(const std::string& path) : mPath(path), mFile(fopen(path.c_str(), "wb")) {
    if (!mFile) fail("create");
}

OutputFile::~OutputFile() {
    if (mFile) fclose(mFile);
}

void OutputFile::write(const void* data, size_t size) {
    if (fwrite(data, 1, size, mFile) != size) fail("write");
    mSize += size;
}

void OutputFile::patch(uint64_t offset, const void* data, size_t size) {
    if (fseeko(mFile, static_cast<off_t>(offset), SEEK_SET) != 0 ||
        fwrite(data, 1, size, mFile) != size || fseeko(mFile, 0, SEEK_END) != 0) {
        fail("write the header of");
    }
}

void OutputFile::close() {
    FILE* file = mFile;
    mFile = nullptr;
    if (fclose(file) != 0) fail("write");
}

void OutputFile::fail(const char* step) const {
    throw ExtractError(std::string("cannot ") + step + " " + mPath + ": " + strerror(errno));
}

void writeFile(const std::string& path, const void* data, size_t size) {
    OutputFile file(path);
    file.write(data, size);
    file.close();
}

std::unique_ptr<SampleWriter> makeSampleWriter(const FormatReport& format,
                                               const std::string& path) {
    using namespace android;
    const std::string mime = format.text(host::kKeyMime);
    const auto is = [&mime](const char* other) { return strcasecmp(mime.c_str(), other) == 0; };
    if (is(MEDIA_MIMETYPE_VIDEO_AVC)) return makeStartCodeWriter(format, false, path);
    if (is(MEDIA_MIMETYPE_VIDEO_HEVC)) return makeStartCodeWriter(format, true, path);
    if (is(MEDIA_MIMETYPE_AUDIO_RAW)) return makeWavWriter(format, path);
    if (is(MEDIA_MIMETYPE_AUDIO_AAC)) return makeAdtsWriter(format, path);
    if (is(MEDIA_MIMETYPE_VIDEO_VP8)) return makeIvfWriter(format, "VP80", path);
    if (is(MEDIA_MIMETYPE_VIDEO_VP9)) return makeIvfWriter(format, "VP90", path);
    return makePlainWriter(format, path);
}

}  // namespace orvel::probe
