// main() of a fuzz target in builds without the fuzzer: gives the target each file that is named,
// and each file below each folder. Ends with 0 when it came through all of them.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesAt(const std::filesystem::path& place) {
  if (!std::filesystem::is_directory(place)) return {place};
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::cerr << path.string() << ": cannot be read" << std::endl;
    return false;
  }
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  std::clog << path.string() << std::endl;  // the last one is the one that does not come through
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int at = 1; at < argc; ++at) {
    for (const auto& file : filesAt(argv[at])) {
      if (!replay(file)) return 2;
      ++count;
    }
  }
  std::cout << count << " inputs" << std::endl;
  return count > 0 ? 0 : 2;
}
