// Reader of the message catalogue. Nothing in the file is trusted: a missing or damaged one costs texts and names, and every
// other service of the library goes on.
#include "runtime/catalogue.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "runtime/error.hpp"
#include "zent.h"
#include "zents.h"

namespace zent {
namespace {

constexpr unsigned short magic = 29432;
constexpr long header_words = 7;
constexpr long number_modulus = 100000;  // callers may add multiples of it to tell sites apart
constexpr long path_bytes = 4096;
constexpr long greatest_shift = 40;  // beyond it a record would lie past the end of any file
constexpr const char* default_path = "./:$HOME/:/usr/lib/:/usr/local/lib/";

enum Status { unopened, failed_for_good, ready };
enum Index : long { not_found = -1, no_memory = -2 };

// One a half and process; the file stays open until the process ends.
struct CatalogueFile {
  Status status;
  int descriptor;
  unsigned short header[header_words];
  unsigned short* numbers;  // n, ascending
  unsigned short* offsets;  // n + 1, in units of 2 to the power `shift`
  long base;                // offset 0 stands for this byte
  bool swapped;
};

template <class Half>
CatalogueFile catalogue_file{unopened, -1, {}, nullptr, nullptr, 0, false};

long record_count(const CatalogueFile& file) {
  return file.header[2];
}
long greatest_text(const CatalogueFile& file) {
  return file.header[4];
}
long greatest_name(const CatalogueFile& file) {
  return file.header[5];
}
long shift(const CatalogueFile& file) {
  return file.header[6];
}

bool read_fully(int descriptor, void* to, long bytes) {
  char* at = static_cast<char*>(to);
  while (bytes > 0) {
    const ssize_t got = read(descriptor, at, static_cast<size_t>(bytes));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    at += got;
    bytes -= got;
  }
  return true;
}

void swap_words(unsigned short* words, long n) {
  for (long i = 0; i < n; ++i) words[i] = static_cast<unsigned short>(words[i] << 8 | words[i] >> 8);
}

// True ends the search. A file that exists but cannot be opened hides those behind it, so that a wrong permission shows.
bool l_look_for_file(const char* candidate, int* descriptor) {
  struct stat found;
  if (stat(candidate, &found) != 0) return false;
  *descriptor = open(candidate, O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe without a writer must not hold the library up
  return true;
}

// Writes entry + file to `out`. False for an entry to skip: its variable is not set, its name runs to the end of the path, or it
// is too long.
bool l_expand_entry(const char* entry, long length, const char* file, char* out) {
  const char* value = "";
  if (length > 0 && entry[0] == '$') {
    long end = 1;
    while (end < length && entry[end] != '/') ++end;
    if (end > path_bytes || entry[end] == '\0') return false;
    std::memcpy(out, entry + 1, static_cast<size_t>(end - 1));
    out[end - 1] = '\0';
    value = end > 1 ? std::getenv(out) : nullptr;
    if (value == nullptr) return false;
    entry += end;
    length -= end;
  }
  const size_t head = std::strlen(value), rest = static_cast<size_t>(length), tail = std::strlen(file);
  if (head >= path_bytes || rest >= path_bytes || head + rest + tail >= path_bytes) return false;
  std::memcpy(out, value, head);
  std::memcpy(out + head, entry, rest);
  std::memcpy(out + head + rest, file, tail + 1);
  return true;
}

// Entries from left to right; no separator is added, so an entry that names a directory ends in "/".
bool l_parse_path(const char* path, const char* file, int* descriptor) {
  char candidate[path_bytes];
  for (;;) {
    const long length = static_cast<long>(std::strcspn(path, ":"));
    if (l_expand_entry(path, length, file, candidate) && l_look_for_file(candidate, descriptor)) return true;
    if (path[length] == '\0') return false;
    path += length + 1;
  }
}

bool l_check_header(CatalogueFile& file) {
  if (file.header[0] == magic) return true;
  swap_words(file.header, header_words);
  file.swapped = true;
  return file.header[0] == magic;
}

bool read_words(const CatalogueFile& file, unsigned short* words, long n) {
  if (!read_fully(file.descriptor, words, n * 2)) return false;
  if (file.swapped) swap_words(words, n);
  return true;
}

// The first multiple of the unit above the end of the indexes; without a shift, one byte before that end.
void l_find_base(CatalogueFile& file) {
  const long end = 4 * record_count(file) + 15;
  file.base = end;
  if (shift(file) == 0 || shift(file) > greatest_shift) return;
  const long unit = 1L << shift(file);
  file.base = end + unit - end % unit;
}

// Empty or the reason of a failure; null when the file is ready.
const char* l_read_indexes(CatalogueFile& file) {
  if (!read_fully(file.descriptor, file.header, sizeof file.header)) return "";
  if (!l_check_header(file)) return "File is not in zenterr.bin format";
  const long n = record_count(file);
  file.numbers = static_cast<unsigned short*>(std::malloc(static_cast<size_t>(n + 1) * 2));
  file.offsets = static_cast<unsigned short*>(std::malloc(static_cast<size_t>(n + 1) * 2));
  if (file.numbers == nullptr || file.offsets == nullptr) return "Out-of-space";
  if (!read_words(file, file.numbers, n) || !read_words(file, file.offsets, n + 1)) return "";
  l_find_base(file);
  return nullptr;
}

void release_file(CatalogueFile& file) {
  if (file.descriptor >= 0) close(file.descriptor);
  std::free(file.numbers);
  std::free(file.offsets);
  file.descriptor = -1;
  file.numbers = file.offsets = nullptr;
}

// The path set by option, or else the environment's, or else the usual places; kept in the view as a copy.
const char* search_path(CatalogueView& view, const char* variable) {
  if (view.path != nullptr) return view.path;
  const char* path = std::getenv(variable);
  if (path == nullptr) path = default_path;
  const size_t bytes = std::strlen(path) + 1;
  view.path = static_cast<char*>(std::malloc(bytes));
  if (view.path == nullptr) return path;
  std::memcpy(view.path, path, bytes);
  return view.path;
}

template <class Half>
void l_open_error_file() {
  CatalogueFile& file = catalogue_file<Half>;
  CatalogueView& view = error_state<Half>.catalogue;
  const bool found = l_parse_path(search_path(view, Half::catalogue_variable), view.file, &file.descriptor);
  const char* reason = found ? l_read_indexes(file) : "File not found";
  if (reason == nullptr) {
    file.status = ready;
    return;
  }
  view.reason = reason;
  file.status = failed_for_good;
  release_file(file);
  std::fprintf(stderr, "Error in reading %s\n%s.\n", view.file, reason);
}

int l_compare(const void* key, const void* element) {
  const long wanted = *static_cast<const long*>(key);
  const long here = *static_cast<const unsigned short*>(element);
  return (wanted > here) - (wanted < here);
}

// Index of the number's record, or not_found. The file name is stored anew each time: an option that sets it has no effect.
template <class Half>
long l_find(long number) {
  CatalogueFile& file = catalogue_file<Half>;
  error_state<Half>.catalogue.file = Half::catalogue_file;
  if (file.status == unopened) l_open_error_file<Half>();
  if (file.status != ready || number < 0) return not_found;
  const long key = number % number_modulus;
  const void* hit = std::bsearch(&key, file.numbers, static_cast<size_t>(record_count(file)), sizeof *file.numbers, l_compare);
  return hit == nullptr ? not_found : static_cast<const unsigned short*>(hit) - file.numbers;
}

// Two bytes more than the file asks for: whatever is read ends as two terminated strings.
bool allocate_record(const CatalogueFile& file, CatalogueView& view) {
  if (view.record != nullptr) return true;
  view.record_capacity = greatest_text(file) + greatest_name(file) + 2;
  view.record = static_cast<char*>(std::malloc(static_cast<size_t>(view.record_capacity) + 2));
  return view.record != nullptr;
}

// The read goes one unit past the record, because its end is known in whole units only.
bool read_record(const CatalogueFile& file, CatalogueView& view, long index) {
  const long units = static_cast<long>(file.offsets[index + 1]) - file.offsets[index] + 1;
  if (shift(file) > greatest_shift) {
    view.reason = "Cannot seek to correct location";
    return false;
  }
  if (units < 1) return false;
  long length = units << shift(file);
  if (length > view.record_capacity) length = view.record_capacity;
  const long start = file.base + (static_cast<long>(file.offsets[index]) << shift(file));
  if (lseek(file.descriptor, start, SEEK_SET) != start) {
    view.reason = "Cannot seek to correct location";
    return false;
  }
  if (!read_fully(file.descriptor, view.record, length)) return false;
  view.record[length] = view.record[length + 1] = '\0';
  return true;
}

}  // namespace

// Index and number are stored together and only after a good read, so they always describe what the buffer holds.
template <class Half>
const char* find_message(long number) {
  CatalogueFile& file = catalogue_file<Half>;
  CatalogueView& view = error_state<Half>.catalogue;
  if (view.number >= 0 && number == view.number) return view.record;
  long index = l_find<Half>(number);
  if (index == not_found) {
    std::snprintf(view.fallback, fallback_bytes, "Error code %ld.", number);
    return view.fallback;
  }
  if (!allocate_record(file, view)) {
    view.reason = "Out-of-memory";
    index = no_memory;
  }
  if (index == no_memory) {
    std::snprintf(view.fallback, fallback_bytes, "Error in reading %s for error message %ld.\n%s.\n", view.file, number,
                  view.reason);
    file.status = failed_for_good;
    return view.fallback;
  }
  view.number = -1;
  view.index = not_found;
  if (!read_record(file, view, index)) return view.fallback;
  view.number = number;
  view.index = index;
  return view.record;
}

template <class Half>
const char* find_name(long number) {
  CatalogueView& view = error_state<Half>.catalogue;
  const char* text = find_message<Half>(number);
  if (catalogue_file<Half>.status != ready) {
    std::snprintf(view.name, name_bytes, "%ld", number);
  } else if (text == view.fallback) {
    view.name[0] = '\0';
  } else {
    const char* name = text + std::strlen(text) + 1;
    const size_t length = strnlen(name, name_bytes - 1);
    std::memcpy(view.name, name, length);
    view.name[length] = '\0';
  }
  return view.name;
}

template const char* find_message<Math>(long);
template const char* find_message<Stat>(long);
template const char* find_name<Math>(long);
template const char* find_name<Stat>(long);

}  // namespace zent

extern "C" {
const char* zent_find_message(long number) {
  return zent::find_message<zent::Math>(number);
}
const char* zent_find_name(long number) {
  return zent::find_name<zent::Math>(number);
}
const char* zents_find_message(long number) {
  return zent::find_message<zent::Stat>(number);
}
const char* zents_find_name(long number) {
  return zent::find_name<zent::Stat>(number);
}
}
