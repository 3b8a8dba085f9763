// Compares what the plug-in delivers with what plain libavformat reads, sample by sample.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "delivered_form.h"
#include "framework/Buffer.h"
#include "reference.h"
#include "report.h"

namespace orvel::probe {

// Fed while the plug-in is read. One thread; what FFmpeg logs for it counts as nobody's.
class Verifier {
  public:
    // The tracks are those that will be read; `allTracks`: how many the file has.
    Verifier(const std::string& path, const std::vector<TrackReport>& tracks, size_t allTracks);

    // The next sample of the track at `position` in `tracks`.
    void sample(size_t position, const host::Buffer& buffer);
    // How a track ended: a status, 0 at a limit.
    void end(size_t position, int32_t status);
    VerifyReport take() { return std::move(mReport); }

  private:
    struct Lane {
        size_t track = 0;   // the plug-in's
        size_t stream = 0;  // position in the reference's streams
        bool compared = false;
        // libavformat marks every packet of text as key, the plug-in goes by the file's index.
        bool comparesKey = true;
        DeliveredForm form;
        uint64_t next = 0;  // number of the next sample
    };

    void match(const std::vector<TrackReport>& tracks, size_t allTracks);
    bool isSame(const Lane& lane, const ReferencePacket& packet, const host::Buffer& buffer) const;
    void compare(const Lane& lane, const ReferencePacket& packet, const host::Buffer& buffer);
    void add(Difference::What what, const Lane& lane, int64_t plugin, int64_t reference);
    void addTrack(std::optional<size_t> track, const std::string& text);

    VerifyReport mReport;
    std::unique_ptr<Reference> mReference;  // null when it cannot be opened
    std::vector<Lane> mLanes;
};

}  // namespace orvel::probe
