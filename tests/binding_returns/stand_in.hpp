// A host that raises nothing: every raise is counted and comes back. What a module does behind a raise is seen with it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "binding/orv_host.h"

namespace stand_in {

inline long raises = 0;          // errors that a real host would have left by
inline std::string last;         // text of the last one
inline std::string information;  // printed
inline bool no_memory = false;   // operations that make variables give null
inline bool no_block = false, no_table = false;
inline std::vector<ORV_SYSRTN> rows;
inline jmp_buf* buffer = nullptr;
inline std::function<ORV_VARIABLE*(ORV_CALLREC*)> user;  // what a user routine does
inline long live = 0;                                    // temporaries not released yet

// An array of the given type; the test owns it. `data` is read by reference.
struct Array {
  long count;
  void* data;
};
ORV_VARIABLE array(int type, Array& content);
ORV_VARIABLE integer(long value);
ORV_VARIABLE real(double value);
ORV_VARIABLE text(const char* value);

}  // namespace stand_in
