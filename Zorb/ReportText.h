#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Fabric/Report.h"
#include "Zorb/Style.h"
#include "Zorb/Table.h"

namespace Zorb {

/// Renders the report for a person: first whether all is well, then each mount group in numbers,
/// how far it is with its initial mounts, what is missing and why, the same of publications, the
/// log, and the expectations that failed. Long lists of switches, paths and messages are cut;
/// nothing else is.
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
  void writePublishGroups(std::ostream& out) const;
  /// Groups of mounts or of publications.
  template <class Group>
  void writeMissing(std::ostream& out, const std::string& name,
                    const std::vector<Group>& groups) const;
  void writeLog(std::ostream& out) const;
  void writeExpectations(std::ostream& out) const;

  /// What is not as it should be, a line each.
  void writeTroubles(std::ostream& out) const;
  void line(std::ostream& out, Style style, const std::string& text) const;
  void title(std::ostream& out, const std::string& text) const;
  std::vector<Table::Cell> groupRow(const Report::Group& group, bool withNotConnected) const;
  std::vector<Table::Cell> publishGroupRow(const Report::PublishGroup& group,
                                           bool withNotConnected) const;
  std::vector<Table::Cell> missingRow(const Report::Missing& missing,
                                      std::size_t pathsOfGroup) const;
  bool allConnected() const { return report_.connectedSwitches() == report_.switches.size(); }
  std::string switchList(const Report::SwitchIndices& switches) const;

  const Report& report_;
  bool colours_;
};

/// The expectations that failed, with the place of each in the document, each line after `indent`.
void writeFailures(const Fabric::Report& report, std::ostream& out, const std::string& indent);

}  // namespace Zorb
