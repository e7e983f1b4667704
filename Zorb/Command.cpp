#include "Zorb/Command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "Fabric/InputError.h"
#include "Zorb/SimCommand.h"
#include "Zorb/SoakCommand.h"
#include "Zorb/UsageError.h"
#include "Zorb/Version.h"

namespace Zorb {

namespace {

constexpr const char* kDescription =
    "zorb keeps a controller's state store in step with its switches: what the services want\n"
    "mounted from every switch, and what they want published to the switches.";

constexpr const char* kFooter =
    "First steps:\n"
    "  zorb sim examples/first-fabric.yaml      run a fabric in virtual time, print a report\n"
    "  zorb sim --help                          what else can be had from a run\n"
    "  zorb soak                                random fabrics, every invariant checked\n"
    "\n"
    "Exit status: 0, 1 when an expectation of the document failed, 2 for bad usage or input.";

/// "sim " or "soak " when one of them was meant, for hints.
std::string subcommand(const std::vector<std::string>& arguments) {
  if (arguments.empty() || (arguments[0] != "sim" && arguments[0] != "soak")) return "";
  return arguments[0] + " ";
}

void parse(CLI::App& app, std::vector<std::string> arguments) {
  if (arguments.empty()) throw UsageError("expected a subcommand: sim or soak; see zorb --help");
  const std::string& first = arguments.front();
  const auto isMeant = [&first](const CLI::App* command) { return command->get_name() == first; };
  if (!first.starts_with('-') && app.get_subcommands(isMeant).empty()) {
    throw UsageError("there is no subcommand \"" + first +
                     "\", expected sim or soak; see zorb --help");
  }
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  app.parse(std::move(arguments));
  if (app.get_subcommands().empty())
    throw UsageError("expected a subcommand: sim or soak; see zorb --help");
}

}  // namespace

int runCommand(const std::vector<std::string>& arguments, const Console& console) {
  CLI::App app(kDescription, "zorb");
  app.footer(kFooter);
  app.set_version_flag("--version", std::string("zorb ") + kVersion, "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  SimCommand sim(app, console);
  SoakCommand soak(app, console);
  try {
    parse(app, arguments);
    return app.got_subcommand("soak") ? soak.run() : sim.run();
  } catch (const CLI::Success& wish) {  // help, version
    app.exit(wish, console.out, console.errors);
    console.out.flush();
    return kSuccess;
  } catch (const CLI::ParseError& error) {
    console.errors << "zorb: " << error.what() << "; see zorb " << subcommand(arguments) << "--help"
                   << std::endl;
  } catch (const UsageError& error) {
    console.errors << "zorb: " << error.what() << std::endl;
  } catch (const Fabric::InputError& error) {
    console.errors << error.what() << std::endl;
  }
  return kBadUsageOrInput;
}

}  // namespace Zorb
