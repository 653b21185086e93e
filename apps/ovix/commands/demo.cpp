#include "apps/ovix/demo.h"

#include <CLI/CLI.hpp>

#include "apps/ovix/commands/command.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

class CDemoCommand final : public ICommand {
  public:
    const char* Verb() const override { return "demo"; }
    const char* Brief() const override {
        return "make a scene, push it through a camera's frame format and the whole library, show the result";
    }
    const char* Examples() const override { return "ovix demo\novix demo -o pictures --scale F"; }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("-o,--output", directory_, "folder for the pictures, made when missing (else ovix-demo)")
            ->type_name("FOLDER");
        verb.add_option("--size", size_, "size of the image in pixels (else 640x480)")->type_name("WxH");
        verb.add_option("--scale", scale_, "scale of temperatures (else C)")->type_name("C|F|K|R");
        verb.add_flag("--json", json_, "one JSON document instead of tables");
    }
    EExit Run() override {
        SDemoOptions options;
        if (!directory_.empty()) options.directory = directory_;
        if (!size_.empty()) std::tie(options.width, options.height) = ParseSize("--size", size_);
        options.scale = ParseScale("--scale", scale_);
        options.json = json_;
        return EExit{static_cast<EExit>(RunDemo(options))};
    }

  private:
    std::string directory_;
    std::string size_;
    std::string scale_ = "C";
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeDemoCommand() { return std::make_unique<CDemoCommand>(); }

}  // namespace ovix::app
