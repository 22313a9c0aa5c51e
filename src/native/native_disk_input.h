#pragma once

#include <string>

#include "flow/input_flow_item.h"
#include "native/native_reader.h"

namespace halvern {

/// Feeds every trace of a native dataset into the flow, in order.
class NativeDiskInput final : public InputFlowItem {
public:
    NativeDiskInput(const FlowSection& section, LogFlag log);

    const char* GetInputName() override { return file_.c_str(); }
    std::vector<std::string> FilesRead() const override;
    const char* GetInputHeaderName() override { return reader_.parts().desc_path.c_str(); }

protected:
    void OpenSource() override;
    LineHeader& SourceLine() override { return reader_.line(); }
    TraceHeaderDefinition& SourceHeader() override { return reader_.definition(); }
    TraceSamples& SourceSamples() override { return reader_.samples(); }
    ReadResult ReadNext() override;
    std::int64_t SourceTraceCount() override { return reader_.trace_count(); }
    bool Reposition(std::int64_t index) override { return reader_.move_to(index); }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;

    std::string file_;
    NativeReader reader_;
};

}  // namespace halvern
