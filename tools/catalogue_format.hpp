// The message catalogue as text and as bytes.
//
// Text: UTF-8. A line that begins with "#" is a comment. A record is a line "NUMBER NAME" at the left margin and one or more
// indented lines of text, which are joined with one blank; a blank line ends it. Substitution keys in a text:
//   %(i1) integer   %(r1) or %(d1) real   %(c1) or %(z1) complex   %(l1) or %(s1) text   %(d1%6.2f) with a format   %/ newline
#pragma once

#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zent_catalogue {

struct Record {
  long number;
  std::string name;
  std::string text;
  long line;  // of the number, for complaints
};

// Complaints "file:line: what is wrong", in the order of the lines where possible.
using Problems = std::vector<std::string>;

// Reads the text form; records with problems are left out.
std::vector<Record> read_records(std::istream& in, const std::string& file, Problems& problems);

// Numbers and names against a half's error table: nothing unknown, nothing missing.
using Table = std::map<long, std::string>;
const Table& math_table();
const Table& stat_table();
void check_complete(const std::vector<Record>& records, const Table& table, const std::string& file, Problems& problems);

// The values that a text shows, such as {"i1", "l2"}; letters for one kind of value count as one: i, r, c, l.
std::set<std::string> keys_of(const std::string& text);

struct Encoding {
  unsigned shift = 3;       // records begin at multiples of 2 to this power
  bool big_endian = false;  // the reader takes either order
};

// The binary form, or empty bytes with a problem if the records do not fit its 16-bit fields.
std::vector<unsigned char> encode(const std::vector<Record>& records, Encoding encoding, const std::string& file,
                                  Problems& problems);

}  // namespace zent_catalogue
