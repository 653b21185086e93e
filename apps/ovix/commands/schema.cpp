#include <CLI/CLI.hpp>

#include "apps/ovix/commands/command.h"
#include "apps/ovix/schema/schemas.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace {

class CSchemaCommand final : public ICommand {
  public:
    const char* Verb() const override { return "schema"; }
    const char* Brief() const override { return "the JSON Schema of what a verb writes with --json, or of a file"; }
    const char* Examples() const override {
        return "ovix schema stats\n"
               "ovix schema error\n"
               "ovix schema description";
    }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("VERB", verb_,
                        "the verb; or \"error\" for what any verb says of an error, \"progress\" for --progress json, "
                        "\"description\" for what stands beside .npy and .csv, \"user-calibration\", \"regions\"")
            ->required()
            ->type_name("");
        verb.add_flag("--json", json_, "the same: it is always JSON");
    }
    EExit Run() override {
        const Json all = Json::parse(Schemas());
        std::vector<std::pair<std::string, const Json*>> words;
        for (const char* list : {"verbs", "files"}) {
            for (const auto& [name, schema] : all[list].items()) words.emplace_back(name, &schema);
        }
        Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                       {"title", "ovix " + verb_ + " --json"}};
        schema.update(*ParseChoice<const Json*>("schema", verb_, words));
        schema["$defs"] = all["$defs"];
        PrintJson(schema);
        return ExitDone;
    }

  private:
    std::string verb_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeSchemaCommand() { return std::make_unique<CSchemaCommand>(); }

}  // namespace ovix::app
