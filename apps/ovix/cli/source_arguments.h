#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/ovix/app_error.h"
#include "measure/measure.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// How many files a verb takes in one call.
enum class EInputs : u8 { One, Many };

/// The options that say which file is read, how its frames lie in it, which of them are wanted, and what its faults
/// mean.
class CSourceArguments {
  public:
    void Add(CLI::App& verb, EInputs inputs = EInputs::One);
    /// Of a verb that takes many: the options for each of the files, at least one. Those that describe a dump go to the
    /// files that do not say their format by themselves. Throws for no file, for a list of files that cannot be read,
    /// and for a described dump that is not among them.
    std::vector<CSourceArguments> Each() const;

    /// Says what the source is worth on the standard error, and reads damaged metadata where the caller wants to show
    /// them. Throws when it or the options would not do, and for a doubt
    /// where the user is strict.
    measure::CSource Open(bool acceptDamage = false) const;
    /// The file as the user wrote it.
    const std::string& File() const { return file_; }
    /// The chosen frames; nothing for all.
    std::optional<measure::CFrameNumbers> Frames(const measure::CSource& source) const;
    /// Reads the one frame that another option's text names; of a pipe, with all frames before it.
    static void ReadOne(const measure::CSource& source, const std::string& text, const char* option,
                        measure::SRawFrame& raw);
    bool ChoosesFrames() const { return !frames_.empty(); }
    bool NamesType() const { return !pixelType_.empty(); }
    measure::EOnFault OnError() const;
    unsigned Jobs() const;
    /// For what shows while frames are read: says what is new since, and throws as `Open`.
    void SayNew(const measure::CSource& source, std::size_t& said) const;

    /// What the run ends with: 3 where frames were skipped or the source is damaged.
    static EExit Exit(const measure::CSource& source, u64 skipped);

  private:
    /// Which of the options that describe a dump were given: "--pixel-type, --size".
    std::string GivenOfDump() const;
    bool Describes() const { return !GivenOfDump().empty(); }
    measure::SOpenOptions Options() const;
    measure::CSource OpenSpooled(const measure::SOpenOptions& options) const;

    std::string file_;
    std::vector<std::string> files_;
    std::string filesFrom_;
    std::string pixelType_;
    std::string size_;
    std::string frameSize_;
    std::string frames_;
    std::string onError_ = "stop";
    std::string jobs_;
    std::string timeout_;
    bool follow_ = false;
    bool spool_ = false;
    bool strict_ = false;
    bool acceptDamage_ = false;
};

}  // namespace ovix::app
