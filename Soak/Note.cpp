#include "Soak/Note.h"

#include <algorithm>

#include "Soak/Random.h"

namespace Soak {

namespace {

void copy(char (&to)[Note::kTextSize], std::string_view from) {
  const std::size_t size = std::min(from.size(), Note::kTextSize - 1);
  std::copy_n(from.begin(), size, to);
  to[size] = '\0';
}

}  // namespace

void Note::begin(std::uint64_t nextSeed) {
  seed = nextSeed;
  events = 0;
  steps = 0;
  time = 0;
}

void Note::end(std::uint64_t digestOfRun) {
  ++runs;
  eventsOfAll += events;
  stepsOfAll += steps;
  digest += Random::mixed(digestOfRun + Random::mixed(seed));
}

void Note::fail(std::string_view brokenInvariant, std::string_view everything) {
  failed = true;
  copy(invariant, brokenInvariant);
  copy(text, everything);
}

}  // namespace Soak
