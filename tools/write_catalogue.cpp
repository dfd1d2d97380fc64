// write_catalogue [--complete MATH|STAT] in.txt out.bin
//
// Writes the binary message catalogue of one half from its text. With --complete, or if the input is called zenterr.txt or
// zents_e.txt, the numbers and names must be exactly those of the half's error table. Complaints go to the standard error
// stream, one a line as file:line: what is wrong; then nothing is written and the exit status is 1.
#include <cstdio>
#include <fstream>
#include <iostream>

#include "tools/catalogue_format.hpp"

namespace {

using namespace zent_catalogue;

int usage() {
  std::cerr << "usage: write_catalogue [--complete MATH|STAT] in.txt out.bin\n";
  return 1;
}

const Table* table_for(const std::string& flag, const std::string& file) {
  const std::string name = file.substr(file.find_last_of('/') + 1);
  if (flag == "MATH" || (flag.empty() && name == "zenterr.txt")) return &math_table();
  if (flag == "STAT" || (flag.empty() && name == "zents_e.txt")) return &stat_table();
  return nullptr;
}

bool write_bytes(const std::string& file, const std::vector<unsigned char>& bytes) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (out) return true;
  std::remove(file.c_str());  // a build must not take half a file for a finished one
  return false;
}

int run(const std::string& flag, const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  if (!in) {
    std::cerr << from << ": cannot be read\n";
    return 1;
  }
  Problems problems;
  const std::vector<Record> records = read_records(in, from, problems);
  if (const Table* table = table_for(flag, from)) check_complete(records, *table, from, problems);
  std::vector<unsigned char> bytes;
  if (problems.empty()) bytes = encode(records, Encoding{}, from, problems);
  for (const std::string& problem : problems) std::cerr << problem << "\n";
  if (!problems.empty()) return 1;
  if (write_bytes(to, bytes)) return 0;
  std::cerr << to << ": cannot be written\n";
  return 1;
}

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + 1, words + count);
  if (arguments.size() == 2) return run("", arguments[0], arguments[1]);
  if (arguments.size() != 4 || arguments[0] != "--complete" || (arguments[1] != "MATH" && arguments[1] != "STAT")) return usage();
  return run(arguments[1], arguments[2], arguments[3]);
}
