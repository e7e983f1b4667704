#include "Zorb/ReportText.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <string_view>

#include "Fabric/JsonText.h"

namespace Zorb {

using Fabric::Report;
using Cause = Report::Cause;

namespace {

// What a list may hold before it is cut, and to what it is cut.
constexpr std::size_t kListedSwitches = 4;
constexpr std::size_t kCutSwitches = 3;
constexpr std::size_t kListedPaths = 3;
constexpr std::size_t kCutPaths = 2;
constexpr std::size_t kListedMessages = 20;
constexpr std::size_t kListedFailures = 20;
constexpr std::size_t kListedCharacters = 300;

std::string seconds(Orm::Seconds time) {
  std::string out;
  Fabric::appendSeconds(out, time);
  return out + " s";
}

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

std::string switchCount(std::size_t count) { return counted(count, "switch", "switches"); }

std::string publications(std::size_t paths) {
  return paths == 1 ? "The publication of 1 path"
                    : "Publications of " + std::to_string(paths) + " paths";
}

/// "a, b, c" or "a, b (+7 more)".
template <class Range, class TextOf>
std::string list(const Range& range, std::size_t listed, std::size_t cut, TextOf textOf) {
  const std::size_t shown = range.size() <= listed ? range.size() : cut;
  std::string out;
  for (std::size_t at = 0; at != shown; ++at) {
    if (at != 0) out += ", ";
    out += textOf(range[at]);
  }
  if (shown != range.size()) out += " (+" + std::to_string(range.size() - shown) + " more)";
  return out;
}

std::string groupName(const Report::Group& group) {
  return group.service + " / " + group.group + (group.proxy ? " (proxy)" : "");
}

std::string groupName(const Report::PublishGroup& group) {
  return group.service + " / " + group.group;
}

/// Without a part of a character at its end.
std::string cut(const std::string& text) {
  if (text.size() <= kListedCharacters) return text;
  std::size_t size = kListedCharacters;
  while ((static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) --size;
  return text.substr(0, size) + "...";
}

Style styleOf(const Report::Missing& missing) {
  switch (missing.cause) {
    case Cause::failed:
      return Style::bad;
    case Cause::inProgress:
      return Style::busy;
    case Cause::refused:
    case Cause::registeredByOther:
    case Cause::publishedByOther:
    case Cause::notRegistered:
    case Cause::kept:
      break;
  }
  return waitsForLocal(missing.cause, missing.admission) ? Style::busy : Style::plain;
}

Style styleOf(Report::Readiness readiness) {
  switch (readiness) {
    case Report::Readiness::ready:
      return Style::good;
    case Report::Readiness::heldBack:
      return Style::busy;
    case Report::Readiness::notReady:
      break;
  }
  return Style::plain;
}

Table::Cell number(std::size_t count, Style style = Style::plain) {
  return count == 0 ? Table::Cell{"-", Style::faint} : Table::Cell{std::to_string(count), style};
}

std::vector<Table::Cell> headOf(std::initializer_list<const char*> names, bool withNotConnected) {
  std::vector<Table::Cell> head;
  for (const char* const name : names) head.push_back({name, Style::faint});
  if (withNotConnected) head.push_back({"not connected", Style::faint});
  return head;
}

bool isNotConnected(const Report::Missing& missing) {
  return missing.cause == Cause::refused &&
         missing.admission == Controller::Admission::notConnected;
}

std::string reasonWithTimes(const Report::Missing& missing) {
  std::string out = reasonOf(missing);
  if (!missing.timeFirst) return out;
  out += missing.cause == Cause::failed    ? ", asked for at "
         : missing.cause == Cause::refused ? ", looked for again at "
                                           : " since ";
  if (*missing.timeFirst != *missing.timeLast) {
    Fabric::appendSeconds(out, *missing.timeFirst);
    out += " to ";
  }
  return out + seconds(*missing.timeLast);
}

/// The one line that all groups have of switches that are not connected; null when they differ.
template <class Group>
const Report::Missing* commonNotConnected(const std::vector<Group>& groups) {
  const Report::Missing* common = nullptr;
  std::size_t count = 0;
  for (const Group& group : groups) {
    if (!group.notInForce.empty()) continue;
    const auto found = std::find_if(group.missing.begin(), group.missing.end(), isNotConnected);
    if (found == group.missing.end() || found->paths.size() != group.paths) return nullptr;
    if (common && common->switches != found->switches) return nullptr;
    common = &*found;
    ++count;
  }
  return count > 1 ? common : nullptr;
}

template <class Group>
std::size_t notInForce(const std::vector<Group>& groups) {
  return static_cast<std::size_t>(std::count_if(
      groups.begin(), groups.end(), [](const Group& one) { return !one.notInForce.empty(); }));
}

/// How many of the switches have a mount that is missing for the cause.
std::size_t switchesWith(const Report& report, Cause cause) {
  std::vector<bool> with(report.switches.size());
  for (const Report::Group& group : report.groups) {
    for (const Report::Missing& missing : group.missing) {
      if (missing.cause != cause) continue;
      for (const std::uint32_t at : missing.switches) with[at] = true;
    }
  }
  return static_cast<std::size_t>(std::count(with.begin(), with.end(), true));
}

/// How many paths are not published for the reason.
std::size_t pathsWith(const Report& report, Controller::Admission admission) {
  std::set<std::string_view> paths;
  for (const Report::PublishGroup& group : report.publishGroups) {
    for (const Report::Missing& missing : group.missing) {
      if (missing.cause != Cause::refused || missing.admission != admission) continue;
      paths.insert(missing.paths.begin(), missing.paths.end());
    }
  }
  return paths.size();
}

/// Whether all groups are in force and all is there that is admitted.
bool isMounted(const Report& report) {
  return notInForce(report.groups) == 0 && switchesWith(report, Cause::failed) == 0 &&
         switchesWith(report, Cause::inProgress) == 0;
}

bool isPublished(const Report& report) {
  return notInForce(report.publishGroups) == 0 &&
         pathsWith(report, Controller::Admission::entityMissing) == 0 &&
         pathsWith(report, Controller::Admission::notReady) == 0;
}

/// What is as it should be, in a line; empty: nothing is.
std::string goodNews(const Report& report) {
  std::string what;
  if (!report.groups.empty() && isMounted(report)) what = "mounted";
  if (!report.publishGroups.empty() && isPublished(report)) {
    what += what.empty() ? "published" : " and published";
  }
  return what.empty() ? what : "Everything that is admitted is " + what + ".";
}

}  // namespace

void ReportText::write(std::ostream& out) const {
  writeSummary(out);
  writeGroups(out);
  writeInitialMounts(out);
  writeMissing(out, "Not mounted, and why", report_.groups);
  writePublishGroups(out);
  writeMissing(out, "Not published, and why", report_.publishGroups);
  writeLog(out);
  writeExpectations(out);
}

void ReportText::line(std::ostream& out, Style style, const std::string& text) const {
  out << styled(text, style, colours_) << '\n';
}

void ReportText::title(std::ostream& out, const std::string& text) const {
  out << '\n' << styled(text, Style::title, colours_) << '\n';
}

void ReportText::writeSummary(std::ostream& out) const {
  const std::size_t inactive = report_.inactiveSwitches();
  out << styled(report_.document, Style::title, colours_) << " at " << seconds(report_.time)
      << (report_.interrupted ? ", where it was interrupted" : "") << ": "
      << (report_.leader.empty() ? "no leader" : "leader " + report_.leader) << ", "
      << report_.connectedSwitches() << " of " << switchCount(report_.switches.size())
      << " connected";
  if (inactive != 0) out << ", " << inactive << " inactive";
  out << '\n';

  if (report_.groups.empty() && report_.publishGroups.empty()) {
    out << "No service asks for mounts or publications.\n";
    return;
  }
  const std::string good = goodNews(report_);
  if (!good.empty()) line(out, Style::good, good);
  writeTroubles(out);
}

void ReportText::writeTroubles(std::ostream& out) const {
  const std::size_t failed = switchesWith(report_, Cause::failed);
  const std::size_t inProgress = switchesWith(report_, Cause::inProgress);
  const std::size_t missing = pathsWith(report_, Controller::Admission::entityMissing);
  const std::size_t notReady = pathsWith(report_, Controller::Admission::notReady);
  const std::size_t stale = notInForce(report_.groups) + notInForce(report_.publishGroups);
  if (failed != 0) line(out, Style::bad, "Mounts from " + switchCount(failed) + " have failed.");
  if (inProgress != 0) {
    line(out, Style::busy, "Mounts from " + switchCount(inProgress) + " are still in progress.");
  }
  if (missing != 0) {
    line(out, Style::busy,
         publications(missing) +
             (missing == 1 ? " waits for its local entity." : " wait for their local entities."));
  }
  if (notReady != 0) {
    line(out, Style::busy,
         publications(notReady) + (notReady == 1 ? " is not ready." : " are not ready."));
  }
  if (stale != 0) {
    line(out, Style::busy,
         stale == 1 ? "One group is not in force."
                    : std::to_string(stale) + " groups are not in force.");
  }
}

std::vector<Table::Cell> ReportText::groupRow(const Report::Group& group,
                                              bool withNotConnected) const {
  std::vector<Table::Cell> row = {
      {group.service + (group.proxy ? " (proxy)" : "")}, {group.group}, number(group.paths)};
  if (!group.notInForce.empty()) {
    row.resize(3 + 4 + (withNotConnected ? 1 : 0), {"-", Style::faint});
    return row;
  }
  const Report::Counts& counts = group.counts;
  row.push_back(number(counts.mounted, Style::good));
  row.push_back(number(counts.inProgress, Style::busy));
  row.push_back(number(counts.failed, Style::bad));
  row.push_back(number(counts.notAdmitted));
  if (withNotConnected) row.push_back(number(counts.notConnected));
  return row;
}

void ReportText::writeGroups(std::ostream& out) const {
  if (report_.groups.empty()) return;
  title(out, "Mount groups, by switches");
  const bool withNotConnected = !allConnected();
  constexpr auto kLeft = Table::Align::left;
  constexpr auto kRight = Table::Align::right;
  Table table({kLeft, kLeft, kRight, kRight, kRight, kRight, kRight, kRight});
  table.add(
      headOf({"service", "group", "paths", "mounted", "in progress", "failed", "not admitted"},
             withNotConnected));
  for (const Report::Group& group : report_.groups) table.add(groupRow(group, withNotConnected));
  table.write(out, 2, colours_);
}

std::vector<Table::Cell> ReportText::publishGroupRow(const Report::PublishGroup& group,
                                                     bool withNotConnected) const {
  std::vector<Table::Cell> row = {{group.service},
                                  {group.group},
                                  {text(group.readiness), styleOf(group.readiness)},
                                  number(group.paths)};
  if (!group.notInForce.empty()) {
    row.resize(4 + 3 + (withNotConnected ? 1 : 0), {"-", Style::faint});
    return row;
  }
  const Report::PublishCounts& counts = group.counts;
  row.push_back(number(counts.published, Style::good));
  row.push_back(number(counts.waiting, Style::busy));
  row.push_back(number(counts.notAdmitted));
  if (withNotConnected) row.push_back(number(counts.notConnected));
  return row;
}

void ReportText::writePublishGroups(std::ostream& out) const {
  if (report_.publishGroups.empty()) return;
  title(out, "Publish groups, by switches");
  const bool withNotConnected = !allConnected();
  constexpr auto kLeft = Table::Align::left;
  constexpr auto kRight = Table::Align::right;
  Table table({kLeft, kLeft, kLeft, kRight, kRight, kRight, kRight, kRight});
  table.add(
      headOf({"service", "group", "readiness", "paths", "published", "waiting", "not admitted"},
             withNotConnected));
  for (const Report::PublishGroup& group : report_.publishGroups) {
    table.add(publishGroupRow(group, withNotConnected));
  }
  table.write(out, 2, colours_);
}

void ReportText::writeInitialMounts(std::ostream& out) const {
  Table table({Table::Align::left, Table::Align::left});
  const Fabric::ListText names = [](const std::vector<std::string>& all) {
    return list(all, kListedSwitches, kCutSwitches, [](const auto& one) { return one; });
  };
  for (const Report::Group& group : report_.groups) {
    if (!group.initialMounts) continue;
    const bool complete = group.initialMounts->phase == Fabric::InitialMounts::Phase::complete;
    table.add({{groupName(group)},
               {phaseText(*group.initialMounts, names), complete ? Style::good : Style::busy}});
  }
  if (table.empty()) return;
  title(out, "Initial mounts");
  table.write(out, 2, colours_);
}

std::string ReportText::switchList(const Report::SwitchIndices& switches) const {
  return list(switches, kListedSwitches, kCutSwitches,
              [this](std::uint32_t at) { return report_.switches[at].label(); });
}

std::vector<Table::Cell> ReportText::missingRow(const Report::Missing& missing,
                                                std::size_t pathsOfGroup) const {
  const std::size_t paths = missing.paths.size();
  const std::string pathList =
      paths == pathsOfGroup && paths > kListedPaths
          ? "all " + std::to_string(paths) + " paths"
          : list(missing.paths, kListedPaths, kCutPaths, [](const auto& path) { return path; });
  return {{reasonWithTimes(missing), styleOf(missing)},
          {missing.switches.empty() ? "" : switchCount(missing.switches.size())},
          {switchList(missing.switches)},
          {pathList, Style::faint}};
}

template <class Group>
void ReportText::writeMissing(std::ostream& out, const std::string& name,
                              const std::vector<Group>& groups) const {
  constexpr auto kLeft = Table::Align::left;
  Table table({kLeft, kLeft, kLeft, kLeft});
  const Report::Missing* const common = commonNotConnected(groups);
  const std::string indent = "  ";
  for (const Group& group : groups) {
    std::vector<std::vector<Table::Cell>> rows;
    if (!group.notInForce.empty()) rows.push_back({{group.notInForce, Style::busy}});
    for (const Report::Missing& missing : group.missing) {
      if (common && isNotConnected(missing)) continue;
      rows.push_back(missingRow(missing, group.paths));
    }
    if (rows.empty()) continue;
    table.add({{groupName(group)}});
    for (auto& row : rows) {
      row.front().text.insert(0, indent);
      table.add(std::move(row));
    }
  }
  if (common) {
    table.add({{"Every group"}});
    table.add({{indent + reasonOf(*common)},
               {switchCount(common->switches.size())},
               {switchList(common->switches)}});
  }
  if (table.empty()) return;
  title(out, name);
  table.write(out, 2, colours_);
}

void ReportText::writeLog(std::ostream& out) const {
  if (report_.log.empty()) return;
  title(out, "Log");
  Table table({Table::Align::right, Table::Align::left, Table::Align::left});
  const std::size_t shown = std::min(report_.log.size(), kListedMessages);
  for (std::size_t at = 0; at != shown; ++at) {
    const auto& message = report_.log[at];
    table.add({{seconds(message.time)}, {message.handle->id(), Style::busy}, {message.text}});
  }
  table.write(out, 2, colours_);
  if (shown != report_.log.size()) {
    out << "  (+" << report_.log.size() - shown << " more)\n";
  }
}

void ReportText::writeExpectations(std::ostream& out) const {
  if (report_.expectations.empty() && report_.expectationsNotReached == 0) return;
  const std::size_t failed = report_.failedExpectations();
  title(out, "Expectations");
  out << "  "
      << styled(counted(report_.expectations.size() - failed, "holds", "hold"), Style::good,
                colours_);
  if (failed != 0) {
    out << ", " << styled(counted(failed, "does not", "do not"), Style::bad, colours_);
  }
  if (report_.expectationsNotReached != 0) {
    out << ", " << counted(report_.expectationsNotReached, "was not reached", "were not reached");
  }
  out << '\n';
  writeFailures(report_, out, "  ");
}

void writeFailures(const Report& report, std::ostream& out, const std::string& indent) {
  for (const Report::Expectation& expectation : report.expectations) {
    if (expectation.failures.empty()) continue;
    out << indent << report.document << ':' << expectation.mark.line << ':'
        << expectation.mark.column << ": not as expected at " << seconds(expectation.time) << '\n';
    const std::size_t shown = std::min(expectation.failures.size(), kListedFailures);
    for (std::size_t at = 0; at != shown; ++at) {
      const auto& failure = expectation.failures[at];
      out << indent << "  " << failure.path << ": expected " << cut(failure.expected) << ", is "
          << cut(failure.actual) << '\n';
    }
    if (shown != expectation.failures.size()) {
      out << indent << "  (+" << expectation.failures.size() - shown << " more)\n";
    }
  }
}

}  // namespace Zorb
