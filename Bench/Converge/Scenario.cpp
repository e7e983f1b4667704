#include "Bench/Converge/Scenario.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace Bench {

namespace {

constexpr std::array<std::uint32_t, 4> kServerVersions{1, 2, 3, 5};

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
  std::array<char, 80> text;
  const int size = std::snprintf(text.data(), text.size(), format, arguments...);
  return {text.data(), static_cast<std::size_t>(size)};
}

/// FNV-1a of the text and an end mark.
std::uint64_t mixed(std::uint64_t hash, std::string_view text) {
  constexpr std::uint64_t kPrime = 0x100000001b3ULL;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
  return (hash ^ 0xff) * kPrime;
}

}  // namespace

std::vector<std::uint32_t> Scenario::contributorVersions(std::uint32_t contributor) {
  return contributor == 0 ? std::vector<std::uint32_t>{2, 3} : std::vector<std::uint32_t>{3, 5};
}

std::uint32_t Scenario::negotiated(std::uint32_t sw, std::uint32_t service) {
  const std::uint32_t number = sw + service;
  if (number % 16 == 15) return 0;  // announces version 4 alone, which the controller has not
  const std::uint32_t highest = 1 + number % 5;
  return *(std::upper_bound(kServerVersions.begin(), kServerVersions.end(), highest) - 1);
}

std::string Scenario::switchName(std::uint32_t sw) {
  const std::uint32_t x = (sw + 1) * 2654435761U;
  return formatted("0a:5e:%02x:%02x:%02x:%02x", x >> 24, x >> 16 & 255, x >> 8 & 255, x & 255);
}

std::string Scenario::serviceName(std::uint32_t service) {
  return formatted("service-%02u", service);
}

std::string Scenario::groupName(std::uint32_t group) { return formatted("group-%u", group); }

std::string Scenario::path(std::uint32_t entry) const {
  return formatted("/fabric/service-%02u/group-%u/item/%08u", serviceOf(entry), groupOf(entry),
                   entry);
}

std::uint64_t leafDigest(std::string_view service, std::string_view switchName,
                         std::string_view group, std::string_view path, std::uint32_t state,
                         std::string_view mountedPath) {
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (const std::string_view text : {service, switchName, group, path, mountedPath}) {
    hash = mixed(hash, text);
  }
  hash ^= state * 0x9e3779b97f4a7c15ULL;
  hash ^= hash >> 29;
  return hash * 0xbf58476d1ce4e5b9ULL;
}

}  // namespace Bench
