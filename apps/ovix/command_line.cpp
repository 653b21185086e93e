#include "apps/ovix/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/provenance.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace {

using Arguments = std::vector<std::string>;

/// The verbs with their grammar.
class CGrammar {
  public:
    CGrammar() {
        app_.set_help_flag("-h,--help", "this help");
        app_.set_version_flag("--version", "ovix " OVIX_VERSION, "the version");
        app_.require_subcommand(0, 1);
        app_.get_formatter()->column_width(32);
        app_.get_formatter()->label("REQUIRED", "");
        app_.footer(
            "\"ovix FILE\" is \"ovix info FILE\"; \"ovix VERB --help\" tells the options of a verb.\n\n"
            "Example:\n"
            "  ovix convert dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --unit temperature --scale C -o "
            "out.png\n\n"
            "\"-o -\" is the standard output, \"-\" for FILE the standard input.\n\n"
            "Exit status: 0 done, 1 the data would not do, 2 wrong usage, 3 done but frames were skipped,\n"
            "4 a file is missing, unreadable, unwritable or of no known format, 130 interrupted.");
        for (const auto make :
             {MakeDemoCommand, MakeFormatsCommand, MakeSynthCommand, MakeInfoCommand, MakeConvertCommand,
              MakeReportCommand, MakePlotCommand, MakeStatsCommand, MakeExplainCommand, MakeUncertaintyCommand,
              MakeDiffCommand, MakeCalibrateCommand, MakeAdjustCommand, MakeRecordCommand, MakeVerifyCommand,
              MakeRepairCommand, MakeIndexCommand, MakeSchemaCommand})
            AddVerb(make());
    }

    /// Options may stand anywhere, also before the verb, so that is looked for first. Options of a verb that do not
    /// exist are named with the nearest one that does.
    Arguments InOrder(Arguments arguments) const {
        RefuseEmptyValues(arguments);
        const std::vector<std::size_t> plain = Plain(arguments);
        if (plain.empty()) return arguments;
        const auto at =
            std::find_if(plain.begin(), plain.end(), [&](std::size_t i) { return Find(arguments[i]) != nullptr; });
        if (at != plain.end()) {
            const auto verb = arguments.begin() + static_cast<std::ptrdiff_t>(*at);
            std::rotate(arguments.begin(), verb, verb + 1);
        } else {
            RefuseMisspelledVerb(arguments[plain.front()]);
            arguments.insert(arguments.begin(), "info");
        }
        RefuseUnknownOptions(*Find(arguments.front()), arguments);
        return arguments;
    }

    void Parse(Arguments arguments) {
        std::reverse(arguments.begin(), arguments.end());
        app_.parse(std::move(arguments));
    }

    EExit Run(Arguments arguments) {
        Parse(std::move(arguments));
        for (std::size_t i = 0; i < verbs_.size(); ++i) {
            if (!verbs_[i]->parsed()) continue;
            RefuseTwoOutputs(*verbs_[i]);
            return commands_[i]->Run();
        }
        Print(Help());
        return ExitDone;
    }

    /// The help of the verb that was asked about, or of all.
    std::string Help() const {
        const CLI::App* verb = ParsedVerb();
        std::string help = verb ? verb->help("ovix") : app_.help();
        for (std::size_t at = 0; (at = help.find("\n\n\n")) != std::string::npos;) help.erase(at, 1);
        return help;
    }

    const CLI::App& Tree() const { return app_; }

    /// What the parser found wrong, in the tool's words.
    CFault Fault(const CLI::ParseError& error) const {
        const CLI::App* verb = ParsedVerb();
        const std::string name = verb ? verb->get_name() + ' ' : "";
        return UsageFault((verb ? verb->get_name() + ": " : "") + error.what() + " (\"ovix " + name +
                          "--help\" tells more)");
    }

  private:
    void AddVerb(std::unique_ptr<ICommand> command) {
        CLI::App* verb = app_.add_subcommand(command->Verb(), command->Brief());
        command->AddOptions(*verb);
        AddMessageOptions(*verb);
        std::string examples = command->Examples();
        for (std::size_t at = 0; (at = examples.find('\n', at)) != std::string::npos; at += 3)
            examples.insert(at + 1, "  ");
        verb->footer((command->ShowsStatus() ? StatusLegendText() + "\n\n" : "") + "Examples:\n  " + examples);
        verbs_.push_back(verb);
        commands_.push_back(std::move(command));
    }

    static void AddMessageOptions(CLI::App& verb) {
        const char* group = "Messages";
        auto* quiet = verb.add_flag_callback(
            "-q,--quiet", [] { SetSaid(ESaid::Errors); }, "say errors alone");
        quiet->group(group);
        verb.add_flag_callback(
                "-v,--verbose", [] { SetSaid(ESaid::Notes); }, "say what is merely worth knowing, too")
            ->group(group)
            ->excludes(quiet);
        const auto progress = [](const std::string& text) {
            SetProgress(ParseChoice<EProgress>(
                "--progress", text,
                {{"terminal", EProgress::Terminal}, {"json", EProgress::Objects}, {"off", EProgress::Off}}));
        };
        verb.add_option_function<std::string>(
                "--progress", progress, "how far it is: on a terminal (the default), as JSON for programs, or off")
            ->type_name("terminal|json|off")
            ->group(group);
    }

    const CLI::App* ParsedVerb() const {
        const auto verb = std::find_if(verbs_.begin(), verbs_.end(), [](const CLI::App* v) { return v->parsed(); });
        return verb == verbs_.end() ? nullptr : *verb;
    }

    const CLI::App* Find(const std::string& verb) const {
        for (const CLI::App* candidate : verbs_) {
            if (candidate->get_name() == verb) return candidate;
        }
        return nullptr;
    }

    /// Whether a value follows the option in an argument of its own.
    bool TakesNext(const std::string& argument) const {
        if (argument.find('=') != std::string::npos) return false;
        if (!argument.starts_with("--") && argument.size() > 2) return false;
        for (const CLI::App* verb : verbs_) {
            const CLI::Option* option = verb->get_option_no_throw(argument);
            if (option) return option->get_items_expected_max() > 0;
        }
        return false;
    }

    static bool IsOption(const std::string& argument) { return argument.size() > 1 && argument[0] == '-'; }

    /// The places of the arguments that are neither options nor values of options.
    std::vector<std::size_t> Plain(const Arguments& arguments) const {
        std::vector<std::size_t> places;
        bool options = true;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (!options || !IsOption(arguments[i])) {
                places.push_back(i);
            } else if (arguments[i] == "--") {
                options = false;
            } else if (TakesNext(arguments[i])) {
                ++i;
            }
        }
        return places;
    }

    /// An empty value is a variable of the shell that nobody set.
    static void RefuseEmptyValues(const Arguments& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (arguments[i].empty() && i && IsOption(arguments[i - 1]))
                throw UsageFault(arguments[i - 1] + ": the value is empty");
            if (arguments[i].empty()) throw UsageFault("an argument is empty");
            if (arguments[i].starts_with("--") && arguments[i].ends_with("="))
                throw UsageFault(arguments[i].substr(0, arguments[i].size() - 1) + ": the value is empty");
        }
    }

    /// What goes to the standard output is one thing: what --json says of an output, or what goes there as JSON.
    static void RefuseTwoOutputs(const CLI::App& verb) {
        if (verb.get_option_no_throw("--csv")) return;
        const CLI::Option* output = verb.get_option_no_throw("--output");
        const CLI::Option* json = verb.get_option_no_throw("--json");
        if (output && output->count() && output->as<std::string>() == "-" && json && json->count())
            throw UsageFault("--json: the standard output is taken by -o -");
    }

    void RefuseMisspelledVerb(const std::string& word) const {
        std::error_code ignored;
        if (std::filesystem::exists(word, ignored)) return;
        Arguments names;
        for (const CLI::App* verb : verbs_) names.push_back(verb->get_name());
        const std::string hint = DidYouMean(word, names);
        if (!hint.empty()) throw UsageFault("there is neither a verb nor a file \"" + word + "\"" + hint);
    }

    void RefuseUnknownOptions(const CLI::App& verb, const Arguments& arguments) const {
        for (std::size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i) {
            if (!arguments[i].starts_with("--")) {
                if (IsOption(arguments[i]) && TakesNext(arguments[i])) ++i;
                continue;
            }
            const std::string name = arguments[i].substr(0, arguments[i].find('='));
            if (name != "--version" && !verb.get_option_no_throw(name)) {
                Arguments names;
                for (const CLI::Option* option : verb.get_options()) {
                    for (const std::string& known : option->get_lnames()) names.push_back("--" + known);
                }
                throw UsageFault(verb.get_name() + ": there is no option " + name + DidYouMean(name, names));
            }
            if (TakesNext(arguments[i])) ++i;
        }
    }

    CLI::App app_{"Data reduction for thermal-camera images", "ovix"};
    std::vector<CLI::App*> verbs_;
    std::vector<std::unique_ptr<ICommand>> commands_;
};

}  // namespace

EExit RunCommandLine(const std::vector<std::string>& arguments) {
    CGrammar grammar;
    RememberCommandLine(arguments);
    try {
        return grammar.Run(grammar.InOrder(arguments));
    } catch (const CLI::CallForHelp&) {
        Print(grammar.Help());
        return ExitDone;
    } catch (const CLI::CallForVersion& version) {
        Print(std::string(version.what()) + '\n');
        return ExitDone;
    } catch (const CLI::ParseError& error) {
        throw grammar.Fault(error);
    }
}

std::function<void(const std::vector<std::string>&)> MakeCommandLineParser() {
    return [grammar = std::make_shared<CGrammar>()](const std::vector<std::string>& arguments) {
        try {
            grammar->Parse(grammar->InOrder(arguments));
        } catch (const CLI::Success&) {
        } catch (const CLI::ParseError& error) {
            throw grammar->Fault(error);
        }
    };
}

void WithCommandTree(const std::function<void(const CLI::App&)>& use) { use(CGrammar().Tree()); }

}  // namespace ovix::app
