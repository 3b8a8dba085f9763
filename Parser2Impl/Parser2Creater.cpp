#define LOG_TAG "Parser2Creater"
#include "Parser2Creater.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include <log/log.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/String8.h>
#include <utils/StrongPointer.h>

#include "OrvelExtractor2.h"
#include "WrapOrvelExtractor.h"
#include "base/OrvelDataSource.h"
#include "ffmpeg/ContainerTable.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {

using android::AMessage;
using android::CDataSource;
using android::CMediaExtractor;
using android::CreatorFunc;
using android::ExtractorDef;
using android::FreeMetaFunc;
using android::OK;
using android::sp;
using android::String8;

namespace {

// Sources of processes whose names begin so are left to the other extractors.
constexpr char kDeclinedProcess[] = "com.tencent.mm";

// Source flags that say that the file is not simply a local one.
constexpr uint32_t kNotLocal = 1 | 4;

// 3f9a1c52-e407-4b8d-9621-c05e7ab3d810
constexpr android::media_uuid_t kUuid = {{0x3f, 0x9a, 0x1c, 0x52, 0xe4, 0x07, 0x4b, 0x8d, 0x96,
                                          0x21, 0xc0, 0x5e, 0x7a, 0xb3, 0xd8, 0x10}};
constexpr uint32_t kExtractorVersion = 2;

constexpr size_t kExtensionSlots = 50;
static_assert(kExtensionCount < kExtensionSlots);
const char* sExtensions[kExtensionSlots];

void listExtensions(uint32_t mask) {
    size_t used = 0;
    for (uint32_t flag = 1; flag <= kLastContainerFlag; flag <<= 1) {
        for (const Container& container : kContainers) {
            if ((container.flag & flag & mask) == 0) continue;
            for (size_t i = 0; container.extensions[i] != nullptr; ++i)
                sExtensions[used++] = container.extensions[i];
        }
    }
    sExtensions[used] = nullptr;
}

}  // namespace

CreatorFunc Sniff(CDataSource* source, float* confidence, void** meta, FreeMetaFunc* /*freeMeta*/) {
    if (strncmp(getprogname(), kDeclinedProcess, strlen(kDeclinedProcess)) == 0) {
        ALOGI("Sniff, disable ffmpeg parser for packageName:%s", kDeclinedProcess);
        return nullptr;
    }
    *confidence = 0;
    const sp<FFmpegObject> object = new FFmpegObject(new OrvelDataSource(source), nullptr);
    if (object->initCheck() != OK) {
        ALOGW("FFmpegObject initCheck failed, then will try qcom parser");
        return nullptr;
    }
    String8 mime;
    void* format = nullptr;
    if (!object->sniff(&mime, confidence, &format)) {
        ALOGW("ffmpeg probe failed, then will try qcom parser");
        return nullptr;
    }
    // No sp here: its release would be the message's last.
    AMessage* message = new AMessage;
    message->setPointer("ff-format", format);
    message->setInt32("localMode", (source->flags(source->handle) & kNotLocal) == 0 ? 1 : 0);
    *meta = message;
    return CreateExtractor;
}

CMediaExtractor* CreateExtractor(CDataSource* source, void* meta) {
    const sp<OrvelDataSource> dataSource = new OrvelDataSource(source);
    const sp<AMessage> message = static_cast<AMessage*>(meta);
    return android::wrap(new WrapOrvelExtractor(new OrvelExtractor2(dataSource, message)));
}

}  // namespace orvel

android::ExtractorDef GETEXTRACTORDEF() {
    const uint32_t mask = static_cast<uint32_t>(orvel::FFmpegObject::getParserFlags());
    ALOGI("OrvelParser_Flags == %x", mask);
    orvel::listExtensions(mask);
    android::ExtractorDef definition = {android::EXTRACTORDEF_VERSION,
                                        orvel::kUuid,
                                        orvel::kExtractorVersion,
                                        "OrvelMedia2 Extractor",
                                        {}};
    definition.u.v3.sniff = orvel::Sniff;
    definition.u.v3.supported_types = orvel::sExtensions;
    return definition;
}
