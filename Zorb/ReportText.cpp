#include "Zorb/ReportText.h"

#include <algorithm>
#include <ostream>
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

/// Without a part of a character at its end.
std::string cut(const std::string& text) {
  if (text.size() <= kListedCharacters) return text;
  std::size_t size = kListedCharacters;
  while ((static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) --size;
  return text.substr(0, size) + "...";
}

Style styleOf(Cause cause) {
  switch (cause) {
    case Cause::failed:
      return Style::bad;
    case Cause::inProgress:
      return Style::busy;
    case Cause::refused:
    case Cause::registeredByOther:
    case Cause::notRegistered:
    case Cause::kept:
      break;
  }
  return Style::plain;
}

Table::Cell number(std::size_t count, Style style = Style::plain) {
  return count == 0 ? Table::Cell{"-", Style::faint} : Table::Cell{std::to_string(count), style};
}

bool isNotConnected(const Report::Missing& missing) {
  return missing.cause == Cause::refused &&
         missing.admission == Controller::Admission::notConnected;
}

std::string reasonWithTimes(const Report::Missing& missing) {
  std::string out = reasonOf(missing);
  if (!missing.askedFirst) return out;
  out += missing.cause == Cause::failed ? ", asked for at " : " since ";
  if (*missing.askedFirst != *missing.askedLast) {
    Fabric::appendSeconds(out, *missing.askedFirst);
    out += " to ";
  }
  return out + seconds(*missing.askedLast);
}

}  // namespace

void ReportText::write(std::ostream& out) const {
  writeSummary(out);
  writeGroups(out);
  writeInitialMounts(out);
  writeMissing(out);
  writeLog(out);
  writeExpectations(out);
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

  std::vector<bool> failed(report_.switches.size());
  std::vector<bool> inProgress(report_.switches.size());
  std::size_t notInForce = 0;
  for (const Report::Group& group : report_.groups) {
    notInForce += group.notInForce.empty() ? 0 : 1;
    for (const Report::Missing& missing : group.missing) {
      for (const std::uint32_t at : missing.switches) {
        failed[at] = failed[at] || missing.cause == Cause::failed;
        inProgress[at] = inProgress[at] || missing.cause == Cause::inProgress;
      }
    }
  }
  const auto failures = std::count(failed.begin(), failed.end(), true);
  const auto waits = std::count(inProgress.begin(), inProgress.end(), true);
  if (report_.groups.empty()) {
    out << "No service asks for mounts.\n";
  } else if (failures == 0 && waits == 0 && notInForce == 0) {
    out << styled("Everything that is admitted is mounted.", Style::good, colours_) << '\n';
  }
  if (failures != 0) {
    const auto count = static_cast<std::size_t>(failures);
    out << styled("Mounts from " + switchCount(count) + " have failed.", Style::bad, colours_)
        << '\n';
  }
  if (waits != 0) {
    const auto count = static_cast<std::size_t>(waits);
    out << styled("Mounts from " + switchCount(count) + " are still in progress.", Style::busy,
                  colours_)
        << '\n';
  }
  if (notInForce != 0) {
    out << styled(notInForce == 1 ? "One group is not in force."
                                  : std::to_string(notInForce) + " groups are not in force.",
                  Style::busy, colours_)
        << '\n';
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
  const bool withNotConnected = report_.connectedSwitches() != report_.switches.size();
  constexpr auto kLeft = Table::Align::left;
  constexpr auto kRight = Table::Align::right;
  Table table({kLeft, kLeft, kRight, kRight, kRight, kRight, kRight, kRight});
  std::vector<Table::Cell> head;
  for (const char* const name :
       {"service", "group", "paths", "mounted", "in progress", "failed", "not admitted"}) {
    head.push_back({name, Style::faint});
  }
  if (withNotConnected) head.push_back({"not connected", Style::faint});
  table.add(std::move(head));
  for (const Report::Group& group : report_.groups) table.add(groupRow(group, withNotConnected));
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
  return {{reasonWithTimes(missing), styleOf(missing.cause)},
          {switchCount(missing.switches.size())},
          {switchList(missing.switches)},
          {pathList, Style::faint}};
}

const Report::Missing* ReportText::commonNotConnected() const {
  const Report::Missing* common = nullptr;
  std::size_t groups = 0;
  for (const Report::Group& group : report_.groups) {
    if (!group.notInForce.empty()) continue;
    const auto found = std::find_if(group.missing.begin(), group.missing.end(), isNotConnected);
    if (found == group.missing.end() || found->paths.size() != group.paths) return nullptr;
    if (common && common->switches != found->switches) return nullptr;
    common = &*found;
    ++groups;
  }
  return groups > 1 ? common : nullptr;
}

void ReportText::writeMissing(std::ostream& out) const {
  constexpr auto kLeft = Table::Align::left;
  Table table({kLeft, kLeft, kLeft, kLeft});
  const Report::Missing* const common = commonNotConnected();
  const std::string indent = "  ";
  for (const Report::Group& group : report_.groups) {
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
  title(out, "Not mounted, and why");
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
