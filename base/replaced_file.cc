// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/replaced_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "base/trusted_links.h"

namespace zr7700 {
namespace {

constexpr int kSafeOpen = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int kMostNames = 8;
constexpr time_t kLeftBehind_s = 60;
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPrivateMode = 0600;

enum class Outcome {
  kDone,
  kNotAllowed,  // the folder does not allow a new file in the old one's place
  kFailed,
};

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int number() const { return number_; }

 private:
  int number_;
};

Outcome WhyNot() {
  switch (errno) {
    case EACCES:
    case EBUSY:  // a mount point of its own
    case EEXIST:
    case ENAMETOOLONG:
    case EPERM:
    case EROFS:
      return Outcome::kNotAllowed;
    default:
      return Outcome::kFailed;
  }
}

// Some file systems have nothing to bring to a disk.
bool BringToDisk(int file) {
  return fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS;
}

bool WriteWhole(int file, std::string_view bytes) {
  size_t done_bytes = 0;
  while (done_bytes < bytes.size()) {
    const ssize_t put_bytes = pwrite(file, bytes.data() + done_bytes, bytes.size() - done_bytes,
                                     static_cast<off_t>(done_bytes));
    if (put_bytes < 0 && errno == EINTR) continue;
    if (put_bytes <= 0) return false;
    done_bytes += static_cast<size_t>(put_bytes);
  }
  return BringToDisk(file);
}

// The old content is overwritten before the rest of it is cut off: the file is never empty.
bool WriteInPlace(int file, std::string_view bytes) {
  return WriteWhole(file, bytes) && ftruncate(file, static_cast<off_t>(bytes.size())) == 0;
}

bool IsLeftBehind(const char* path) {
  struct stat info;
  return lstat(path, &info) == 0 && S_ISREG(info.st_mode) &&
         info.st_mtime < time(nullptr) - kLeftBehind_s;
}

// A new file beside another. It goes again when it is not put in the other's place.
class FileBeside {
 public:
  FileBeside(const PathText& target, mode_t mode) : file_(Open(target, mode)) {}
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;
  ~FileBeside() {
    if (is_there_) unlink(path_.text);
    if (file_ >= 0) close(file_);
  }

  // -1, with errno telling why, when there is none.
  int file() const { return file_; }

  bool PutInPlace(const PathText& target) {
    if (rename(path_.text, target.text) != 0) return false;
    is_there_ = false;
    return true;
  }

 private:
  int Open(const PathText& target, mode_t mode) {
    for (int i = 0; i < kMostNames; ++i) {
      const int length = snprintf(path_.text, sizeof path_.text, "%s.new%d", target.text, i);
      if (length >= static_cast<int>(sizeof path_.text)) {
        errno = ENAMETOOLONG;
        return -1;
      }
      if (IsLeftBehind(path_.text)) unlink(path_.text);
      const int file = open(path_.text, O_WRONLY | O_CREAT | O_EXCL | kSafeOpen, mode);
      is_there_ = file >= 0;
      if (is_there_ || errno != EEXIST) return file;
    }
    return -1;
  }

  PathText path_;
  bool is_there_ = false;
  int file_;
};

// The mode comes last, since a change of owner may drop bits of it.
bool TakeOver(int file, const struct stat& old_facts) {
  struct stat facts;
  if (fstat(file, &facts) != 0) return false;
  const bool is_owner_same = facts.st_uid == old_facts.st_uid && facts.st_gid == old_facts.st_gid;
  if (!is_owner_same && fchown(file, old_facts.st_uid, old_facts.st_gid) != 0) return false;
  return fchmod(file, old_facts.st_mode & 07777) == 0;
}

Outcome ReplaceFromBeside(const PathText& target, const struct stat& old_facts,
                          std::string_view bytes) {
  if (old_facts.st_nlink > 1) return Outcome::kNotAllowed;
  FileBeside beside(target, kPrivateMode);
  if (beside.file() < 0 || !TakeOver(beside.file(), old_facts)) return WhyNot();
  if (!WriteWhole(beside.file(), bytes)) return Outcome::kFailed;
  return beside.PutInPlace(target) ? Outcome::kDone : WhyNot();
}

}  // namespace

bool ReplaceFile(const char* path, std::string_view bytes) {
  PathText target;
  if (!FollowTrustedLinks(path, target)) return false;
  const Descriptor old_file(open(target.text, O_WRONLY | kSafeOpen));
  struct stat old_facts {};
  if (old_file.number() < 0 || fstat(old_file.number(), &old_facts) != 0) return false;
  if (!S_ISREG(old_facts.st_mode)) return false;
  const Outcome outcome = ReplaceFromBeside(target, old_facts, bytes);
  if (outcome != Outcome::kNotAllowed) return outcome == Outcome::kDone;
  return WriteInPlace(old_file.number(), bytes);
}

bool CreateFile(const char* path, std::string_view bytes) {
  PathText target;
  struct stat info;
  if (!FollowTrustedLinks(path, target)) return false;
  if (lstat(target.text, &info) == 0 || errno != ENOENT) return false;
  FileBeside beside(target, kNewFileMode);
  return beside.file() >= 0 && WriteWhole(beside.file(), bytes) && beside.PutInPlace(target);
}

}  // namespace zr7700
