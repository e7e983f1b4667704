#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Fabric/Report.h"
#include "Zorb/Style.h"
#include "Zorb/Table.h"

namespace Zorb {

/// Renders the report for a person: first whether all is well, then each group in numbers, how
/// far it is with its initial mounts, what is missing and why, the log, and the expectations that
/// failed. Long lists of switches, paths and messages are cut; nothing else is.
class ReportText {
 public:
  /// The report must stay.
  ReportText(const Fabric::Report& report, bool colours) : report_(report), colours_(colours) {}

  void write(std::ostream& out) const;

 private:
  using Report = Fabric::Report;

  void writeSummary(std::ostream& out) const;
  void writeGroups(std::ostream& out) const;
  void writeInitialMounts(std::ostream& out) const;
  void writeMissing(std::ostream& out) const;
  void writeLog(std::ostream& out) const;
  void writeExpectations(std::ostream& out) const;

  void title(std::ostream& out, const std::string& text) const;
  std::vector<Table::Cell> groupRow(const Report::Group& group, bool withNotConnected) const;
  std::vector<Table::Cell> missingRow(const Report::Missing& missing,
                                      std::size_t pathsOfGroup) const;
  std::string switchList(const Report::SwitchIndices& switches) const;
  /// The one line that all groups have of switches that are not connected; null when they differ.
  const Report::Missing* commonNotConnected() const;

  const Report& report_;
  bool colours_;
};

/// The expectations that failed, with the place of each in the document, each line after `indent`.
void writeFailures(const Fabric::Report& report, std::ostream& out, const std::string& indent);

}  // namespace Zorb
