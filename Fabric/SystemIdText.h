#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Fabric {

/// The number behind a switch's id, its six bytes with the first as the highest, from the text form
/// "02:00:00:00:00:01" in either case; nothing when the text is no id.
std::optional<std::uint64_t> systemIdNumber(std::string_view text);

/// The text form, in lower case. The number is less than 2^48.
std::string systemIdText(std::uint64_t number);

/// The text form in lower case of an id in either case.
std::optional<std::string> canonicalSystemId(std::string_view text);

/// What messages say is expected where an id is wanted.
inline constexpr std::string_view kSystemIdForm =
    "six groups of two hexadecimal digits with \":\" between them";

}  // namespace Fabric
