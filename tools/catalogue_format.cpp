#include "tools/catalogue_format.hpp"

#include <algorithm>
#include <cctype>
#include <istream>
#include <sstream>

namespace zent_catalogue {
namespace {

constexpr long number_modulus = 100000;  // the reader looks numbers up modulo this
constexpr std::size_t greatest_field = 65535;
constexpr std::size_t greatest_name = 31;
constexpr unsigned magic = 29432;

std::string complaint(const std::string& file, long line, const std::string& what) {
  return file + ":" + std::to_string(line) + ": " + what;
}

bool is_one_of(char c, const char* letters) {
  return c != '\0' && std::string(letters).find(c) != std::string::npos;
}

// The kind of value behind a key's letter, 0 for a letter that is none.
char kind_of(char letter) {
  if (is_one_of(letter, "iI")) return 'i';
  if (is_one_of(letter, "rRdDfF")) return 'r';
  if (is_one_of(letter, "cCzZ")) return 'c';
  if (is_one_of(letter, "lLsS")) return 'l';
  return '\0';
}

// The format is handed to printf as it stands, so it must hold just the conversions that the value can serve.
bool format_fits(const std::string& format, char kind) {
  const char* allowed = kind == 'i' ? "diouxX" : kind == 'l' ? "s" : "eEfFgG";
  int conversions = 0;
  for (std::size_t at = 0; at < format.size(); ++at) {
    if (format[at] != '%') continue;
    ++at;
    if (at < format.size() && format[at] == '%') continue;
    while (at < format.size() && is_one_of(format[at], "-+ #0")) ++at;
    std::size_t width = at;
    while (at < format.size() && (std::isdigit(static_cast<unsigned char>(format[at])) || format[at] == '.')) ++at;
    if (at - width > 5 || at >= format.size() || !is_one_of(format[at], allowed)) return false;
    ++conversions;
  }
  return conversions == (kind == 'c' ? 2 : 1);
}

// Walks over the keys of a text. Returns what is wrong with the first bad one, or empty.
std::string scan_keys(const std::string& text, std::set<std::string>* keys) {
  for (std::size_t at = 0; at + 1 < text.size(); ++at) {
    if (text[at] != '%' || text[at + 1] != '(') continue;
    const std::size_t end = text.find(')', at);
    const std::string key = text.substr(at, end == std::string::npos ? end : end - at + 1);
    if (end == std::string::npos) return "the key \"" + key + "\" has no closing parenthesis";
    const char kind = kind_of(key[2]);
    if (kind == '\0') return "the key \"" + key + "\" has a letter other than i, r, d, f, c, z, l, s";
    if (key.size() < 5 || key[3] < '1' || key[3] > '9') return "the key \"" + key + "\" has no digit from 1 to 9";
    if (key.size() > 5 && (key[4] != '%' || !format_fits(key.substr(4, key.size() - 5), kind)))
      return "the key \"" + key + "\" has a format that does not fit its value";
    if (keys != nullptr) keys->insert(std::string{kind, key[3]});
    at = end;
  }
  return "";
}

bool has_control_character(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 32 || c == 127; });
}

bool read_number(const std::string& word, long* number) {
  if (word.empty() || word.size() > 15) return false;
  *number = 0;
  for (const char c : word) {
    if (c < '0' || c > '9') return false;
    *number = *number * 10 + (c - '0');
  }
  return true;
}

// What is wrong with a number and name line, or empty.
std::string read_heading(const std::string& line, Record* record) {
  std::istringstream words(line);
  std::string number, extra;
  words >> number >> record->name;
  if (!read_number(number, &record->number)) return "a record begins with its number, not with \"" + number + "\"";
  if (record->name.empty()) return "number " + number + " has no name";
  if (words >> extra) return "\"" + extra + "\" behind the name; the text stands indented on the lines below";
  if (record->number % number_modulus > static_cast<long>(greatest_field))
    return "number " + number + " modulo 100000 is above 65535";
  if (record->name.size() > greatest_name) return "the name " + record->name + " has more than 31 characters";
  return "";
}

std::string wrong_text(const Record& record) {
  const std::string which = "number " + std::to_string(record.number);
  if (record.text.empty()) return which + " has no text; an error without one would not be reported";
  if (has_control_character(record.text)) return which + " has a control character in its text";
  return scan_keys(record.text, nullptr);
}

std::string trimmed(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

// Collects one record after the other from the lines of a file.
class Collector {
 public:
  Collector(const std::string& file, Problems& problems) : file_(file), problems_(problems) {}

  void take(const std::string& line, long number) {
    const std::string content = trimmed(line);
    if (!line.empty() && line[0] == '#') return;
    if (content.empty()) return finish();
    if (line[0] != ' ' && line[0] != '\t') return begin(content, number);
    if (!open_) {
      if (!skipping_) complain(number, "text without a number and name above it");
      return;
    }
    current_.text += (current_.text.empty() ? "" : " ") + content;
  }

  void finish() {
    skipping_ = false;
    if (!open_) return;
    open_ = false;
    const std::string wrong = wrong_text(current_);
    if (!wrong.empty()) return complain(current_.line, wrong);
    records_.push_back(current_);
  }

  std::vector<Record> records() {
    return std::move(records_);
  }

 private:
  void begin(const std::string& content, long number) {
    finish();
    current_ = Record{0, "", "", number};
    std::string wrong = read_heading(content, &current_);
    const long key = current_.number % number_modulus;
    if (wrong.empty() && key <= last_) {
      const std::string which = "number " + std::to_string(current_.number);
      wrong = key == last_ ? which + " stands twice" : which + " stands below a greater one (" + std::to_string(last_) + ")";
    }
    open_ = wrong.empty();
    skipping_ = !open_;
    if (!open_) return complain(number, wrong);
    last_ = key;
  }

  void complain(long line, const std::string& what) {
    problems_.push_back(complaint(file_, line, what));
  }

  const std::string& file_;
  Problems& problems_;
  std::vector<Record> records_;
  Record current_{0, "", "", 0};
  long last_ = -1;
  bool open_ = false;      // a record is being collected
  bool skipping_ = false;  // its heading was bad: one complaint is enough
};

Table make_table(bool math) {
  Table table;
#define E(name, number, host) table.emplace(number, #name);
  if (math) {
#include "zent/math_errors.def"
  } else {
#include "zent/stat_errors.def"
    // Raised by the Faure sequence without a row in the table of names: the host shows them as unknown, with these texts.
    table.emplace(11401, "STAT_SKIP_NEG");
    table.emplace(11402, "STAT_BASE_NOT_PRIME");
  }
#undef E
  return table;
}

std::size_t units_of(const Record& record, unsigned shift) {
  const std::size_t bytes = record.text.size() + record.name.size() + 2;
  return (bytes + (std::size_t{1} << shift) - 1) >> shift;
}

// Gathers 16-bit fields in the order asked for.
class Fields {
 public:
  explicit Fields(bool big_endian) : big_endian_(big_endian) {}
  void put(std::size_t value) {
    const unsigned char low = static_cast<unsigned char>(value & 255), high = static_cast<unsigned char>(value >> 8);
    bytes_.push_back(big_endian_ ? high : low);
    bytes_.push_back(big_endian_ ? low : high);
  }
  std::vector<unsigned char> bytes() {
    return std::move(bytes_);
  }

 private:
  std::vector<unsigned char> bytes_;
  bool big_endian_;
};

// Without a shift the reader's base is the last byte of the indexes, which no record may cover.
std::size_t first_offset(unsigned shift) {
  return shift == 0 ? 1 : 0;
}

// The reader's buffer takes the two greatest lengths and 2 bytes, and it reads one unit past a record: the text length that is
// written makes room for that.
struct Lengths {
  std::size_t text = 0, name = 0, units = 0;
};

Lengths measure(const std::vector<Record>& records, unsigned shift) {
  Lengths lengths;
  lengths.units = first_offset(shift);
  std::size_t longest = 0;
  for (const Record& record : records) {
    lengths.text = std::max(lengths.text, record.text.size());
    lengths.name = std::max(lengths.name, record.name.size());
    lengths.units += units_of(record, shift);
    longest = std::max(longest, (units_of(record, shift) + 1) << shift);
  }
  if (longest > lengths.name + 2) lengths.text = std::max(lengths.text, longest - lengths.name - 2);
  return lengths;
}

std::size_t data_base(std::size_t n, unsigned shift) {
  const std::size_t end = 4 * n + 15, unit = std::size_t{1} << shift;
  return shift == 0 ? end : end + unit - end % unit;
}

}  // namespace

std::vector<Record> read_records(std::istream& in, const std::string& file, Problems& problems) {
  Collector collector(file, problems);
  std::string line;
  for (long number = 1; std::getline(in, line); ++number) collector.take(line, number);
  collector.finish();
  return collector.records();
}

const Table& math_table() {
  static const Table table = make_table(true);
  return table;
}

const Table& stat_table() {
  static const Table table = make_table(false);
  return table;
}

void check_complete(const std::vector<Record>& records, const Table& table, const std::string& file, Problems& problems) {
  std::set<long> seen;
  for (const Record& record : records) {
    const auto row = table.find(record.number);
    seen.insert(record.number);
    if (row == table.end())
      problems.push_back(
          complaint(file, record.line, "number " + std::to_string(record.number) + " is not an error of this half"));
    else if (row->second != record.name)
      problems.push_back(complaint(file, record.line,
                                   "number " + std::to_string(record.number) + " is " + row->second + ", not " + record.name));
  }
  for (const auto& [number, name] : table)
    if (seen.count(number) == 0) problems.push_back(file + ": number " + std::to_string(number) + " " + name + " is missing");
}

std::set<std::string> keys_of(const std::string& text) {
  std::set<std::string> keys;
  scan_keys(text, &keys);
  return keys;
}

std::vector<unsigned char> encode(const std::vector<Record>& records, Encoding encoding, const std::string& file,
                                  Problems& problems) {
  const Lengths lengths = measure(records, encoding.shift);
  if (records.size() > greatest_field || lengths.text > greatest_field || lengths.units > greatest_field) {
    problems.push_back(file + ": too many records or too much text for one catalogue");
    return {};
  }
  Fields fields(encoding.big_endian);
  for (const std::size_t value : {std::size_t{magic}, std::size_t{0}, records.size(), std::size_t{0}, lengths.text, lengths.name})
    fields.put(value);
  fields.put(encoding.shift);
  for (const Record& record : records) fields.put(static_cast<std::size_t>(record.number % number_modulus));
  std::size_t offset = first_offset(encoding.shift);
  for (const Record& record : records) {
    fields.put(offset);
    offset += units_of(record, encoding.shift);
  }
  fields.put(offset);
  std::vector<unsigned char> bytes = fields.bytes();
  const std::size_t base = data_base(records.size(), encoding.shift);
  bytes.resize(base + ((offset + 1) << encoding.shift));
  std::size_t at = base + (first_offset(encoding.shift) << encoding.shift);
  for (const Record& record : records) {
    std::copy(record.text.begin(), record.text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    std::copy(record.name.begin(), record.name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at + record.text.size() + 1));
    at += units_of(record, encoding.shift) << encoding.shift;
  }
  return bytes;
}

}  // namespace zent_catalogue
