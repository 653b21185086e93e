#include "apps/ovix/demo_recording.h"

#include "apps/ovix/output/output_file.h"
#include "apps/ovix/pipeline/measurement.h"
#include "apps/ovix/recording/library_file.h"
#include "apps/ovix/recording/recording_source.h"
#include "apps/ovix/recording/recording_writer.h"

namespace ovix::app {

namespace {

void Record(const std::filesystem::path& path, const SFrameFormat& format, SDemoFrame& frame,
            const SDemoOptions& options) {
    COutputFile output(path, options.overwrite);
    CLibraryOutput library(output);
    const u32 size = static_cast<u32>(frame.raw.size());
    SetPacket(*frame.objects.GetSourceInfo(true), size);
    CRecordingWriter writer(BorrowShared<IFile>(library), frame.objects, format, size, false);
    writer.Add(frame.raw);
    writer.Finish();
    output.Commit();
}

}  // namespace

SReadBack RecordAndMeasure(const std::filesystem::path& path, const SFrameFormat& format, SDemoFrame& frame,
                           const SDemoOptions& options) {
    Record(path, format, frame, options);
    CRecordingSource source(OpenRecording(path.string()));
    SMeasureOptions wanted;
    wanted.quantity = EQuantity::Temperature;
    wanted.scale = options.scale;
    CMeasurement measurement(source, wanted);
    const SMeasuredFrame measured = measurement.Measure(0);
    return {{measured.values.begin(), measured.values.end()}, {measured.status.begin(), measured.status.end()}};
}

}  // namespace ovix::app
