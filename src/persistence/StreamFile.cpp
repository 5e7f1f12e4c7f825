// Reading a stream file with the operating system's file interface.
#include "persistence/StreamFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace qvsysbase::streamfile {
namespace {

// A source without a size is first read in a block of this size, then in
// blocks as large as what it has delivered so far.
constexpr std::size_t kChunk = 64 * 1024;

// Reads up to n bytes into dest, resuming after signals and short reads. The
// count read, less than n only at the end of the file; -1 on a read error.
long ReadFully(int fd, char* dest, std::size_t n) {
  std::size_t done = 0;
  while (done < n) {
    const ssize_t got = ::read(fd, dest + done, n - done);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      return -1;
    }
    done += static_cast<std::size_t>(got);
  }
  return static_cast<long>(done);
}

}  // namespace

InputFile::InputFile(const char* path) {
  if (path == nullptr) return;
  const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  struct stat status {};
  // A directory opens for reading on some systems, but holds no stream.
  if (::fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {
    ::close(fd);
    return;
  }
  m_nFd = fd;
  m_bSized = S_ISREG(status.st_mode);
  m_nSize = m_bSized ? static_cast<std::uint64_t>(status.st_size) : 0;
}

InputFile::~InputFile() {
  if (m_nFd >= 0) ::close(m_nFd);
}

bool InputFile::Read(std::string& out, std::size_t n) {
  if (m_nFd < 0) return false;
  const std::size_t start = out.size();
  out.resize(start + n);
  const long got = ReadFully(m_nFd, out.data() + start, n);
  out.resize(start + static_cast<std::size_t>(got > 0 ? got : 0));
  if (got > 0) m_nRead += static_cast<std::uint64_t>(got);
  return got >= 0;
}

bool InputFile::ReadRest(std::string& out, std::size_t limit) {
  if (m_bSized) {
    // Bytes appended to the file after it was opened are not part of it: a
    // file that grows while it is read must not be chased.
    if (m_nSize > limit) return false;
    return m_nRead >= m_nSize || Read(out, static_cast<std::size_t>(m_nSize - m_nRead));
  }
  while (m_nRead <= limit) {
    const std::size_t before = out.size();
    // Doubling keeps the copies linear; reading at most one byte beyond the
    // limit tells a longer source from one of exactly the limit.
    const std::size_t step = static_cast<std::size_t>(
        std::min<std::uint64_t>(std::max(before, kChunk), limit + 1 - m_nRead));
    if (!Read(out, step)) return false;
    if (out.size() - before < step) return m_nRead <= limit;  // the end of the source
  }
  return false;
}

}  // namespace qvsysbase::streamfile
