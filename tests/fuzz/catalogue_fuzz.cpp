// Feeds arbitrary bytes to the catalogue reader as a file. The reader opens its file once a process, so its source is taken in
// whole here and its state is put back for each input.
#include <sys/mman.h>

#include <cstdint>
#include <string>

#include "runtime/catalogue.cpp"
#include "runtime/error.hpp"

namespace {

using zent::Math;

void forget(int descriptor) {
  zent::CatalogueView& view = zent::error_state<Math>.catalogue;
  zent::release_file(zent::catalogue_file<Math>);
  zent::catalogue_file<Math> = zent::CatalogueFile{zent::unopened, -1, {}, nullptr, nullptr, 0, false};
  std::free(view.path);
  std::free(view.record);
  view = zent::CatalogueView{};
  view.index = view.number = -1;
  view.path = strdup(("/proc/self/fd/" + std::to_string(descriptor) + ":").c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const int descriptor = memfd_create("catalogue", 0);
  if (write(descriptor, bytes, size) != static_cast<ssize_t>(size)) return 0;
  forget(descriptor);
  // The path names the file itself here, so the opening is done by hand and everything behind it by the reader.
  zent::CatalogueFile& file = zent::catalogue_file<Math>;
  zent::error_state<Math>.catalogue.file = "";
  zent::l_parse_path(zent::error_state<Math>.catalogue.path, "", &file.descriptor);
  file.status = zent::l_read_indexes(file) == nullptr ? zent::ready : zent::failed_for_good;
  const long n = file.status == zent::ready ? zent::record_count(file) : 0;
  std::size_t total = 0;
  for (long i = 0; i < n && i < 64; ++i) {
    total += std::strlen(zent_find_message(file.numbers[i]));
    if (std::strlen(zent_find_name(file.numbers[i])) > 31) __builtin_trap();
  }
  for (const long number : {0L, 200L, 100200L, -1L, 0x7FFFFFFFFFFFFFFFL}) total += std::strlen(zent_find_name(number));
  close(descriptor);
  return total == static_cast<std::size_t>(-1) ? 1 : 0;
}
