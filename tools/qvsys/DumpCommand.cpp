// qvsys dump FILE: the header and record tree of a persistent stream.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include "Commands.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/StreamStructure.h"

namespace qvsys {
namespace {

// Only regular files: their size bounds what is read, where a device or a pipe
// may never end.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t limit) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(static_cast<std::size_t>(std::min<std::uintmax_t>(size, limit)), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (file.bad() || !file.is_open()) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

// The inspection of the file; for a header that names no stream only the
// header is read, so a large foreign file costs nothing.
std::optional<qvsysbase::StreamStructure> InspectFile(const std::string& path) {
  constexpr std::size_t kHeaderSize = 5;
  const auto header = ReadRegularFile(path, kHeaderSize);
  if (!header) return std::nullopt;
  qvsysbase::StreamStructure inspection = qvsysbase::ReadStreamStructure(*header);
  if (inspection.streamVersion == qvsysbase::ORVEL_REJECTED) return inspection;
  const auto bytes = ReadRegularFile(path, std::numeric_limits<std::size_t>::max());
  if (!bytes) return std::nullopt;
  return qvsysbase::ReadStreamStructure(*bytes);
}

}  // namespace

int RunDump(const Arguments& args) {
  if (args.size() != 1) {
    std::cerr << "qvsys dump: expected one FILE\n";
    return 1;
  }
  const auto inspection = InspectFile(args[0]);
  if (!inspection) {
    std::cerr << "qvsys dump: cannot read " << args[0] << '\n';
    return 1;
  }
  qvsysbase::PrintStreamStructure(std::cout, *inspection);
  return inspection->consistent ? 0 : 1;
}

}  // namespace qvsys
