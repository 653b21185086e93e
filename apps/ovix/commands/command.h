#pragma once

#include <memory>
#include <vector>

#include "apps/ovix/app_error.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// One verb of the tool.
class ICommand {
  public:
    virtual ~ICommand() = default;
    virtual const char* Verb() const = 0;
    /// What it does, in a line.
    virtual const char* Brief() const = 0;
    /// Command lines that work, one below the other.
    virtual const char* Examples() const = 0;
    /// Whether its help explains the status of pixels.
    virtual bool ShowsStatus() const { return false; }
    virtual void AddOptions(CLI::App& verb) = 0;
    /// Failures are thrown as `CAppError`.
    virtual EExit Run() = 0;
};

std::unique_ptr<ICommand> MakeDemoCommand();
std::unique_ptr<ICommand> MakeFormatsCommand();
std::unique_ptr<ICommand> MakeSynthCommand();
std::unique_ptr<ICommand> MakeInfoCommand();
std::unique_ptr<ICommand> MakeConvertCommand();
std::unique_ptr<ICommand> MakeStatsCommand();
std::unique_ptr<ICommand> MakeExplainCommand();
std::unique_ptr<ICommand> MakeAdjustCommand();
std::unique_ptr<ICommand> MakeRecordCommand();
std::unique_ptr<ICommand> MakeVerifyCommand();
std::unique_ptr<ICommand> MakeRepairCommand();
std::unique_ptr<ICommand> MakeCalibrateCommand();
std::unique_ptr<ICommand> MakeSchemaCommand();
std::unique_ptr<ICommand> MakeIndexCommand();
std::unique_ptr<ICommand> MakeReportCommand();
std::unique_ptr<ICommand> MakePlotCommand();
std::unique_ptr<ICommand> MakeUncertaintyCommand();
std::unique_ptr<ICommand> MakeDiffCommand();

}  // namespace ovix::app
