// The routine layer: files that hold one routine each, found on a path and loaded when they are first called. And help.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/lang/interpreter.hpp"

namespace orv {
namespace {

bool read_file(const std::filesystem::path& path, std::string& text) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return false;
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  if (!in || !(all << in.rdbuf())) return false;
  text = all.str();
  return true;
}

// The block of lines that start with //! at the head of a file.
std::string help_text(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  std::string help;
  while (std::getline(in, line) && line.rfind("//!", 0) == 0)
    help += (line.size() > 3 && line[3] == ' ' ? line.substr(4) : line.substr(3)) + "\n";
  return help;
}

bool is_name(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(),
                                      [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; });
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size() + 2, width), ' ');
  return text;
}

}  // namespace

void Interpreter::set_path(std::vector<std::string> folders) {
  path_ = std::move(folders);
}

void Interpreter::load_module(const std::string& name) {
  std::string file = name;
  std::error_code ignored;
  if (name.find('/') == std::string::npos) {
    for (const std::string& folder : module_path_) {
      const std::filesystem::path place = std::filesystem::path(folder) / name;
      if (!std::filesystem::exists(place, ignored)) continue;
      file = place.string();
      break;
    }
  }
  orv::load_module(file);
  names_changed();
}

void Interpreter::define(std::unique_ptr<Function> function, std::map<std::string, const Function*, std::less<>>& table) {
  table[function->name] = function.get();
  functions_.push_back(std::move(function));
  ++epoch_;
}

const Function* Interpreter::load_routine(const std::string& name) {
  if (const auto known = routines_.find(name); known != routines_.end()) return known->second;
  if (!is_name(name)) return nullptr;
  for (const std::string& folder : path_) {
    const std::filesystem::path file = std::filesystem::path(folder) / (name + ".orv");
    std::string text;
    if (!read_file(file, text)) continue;
    Program program = parse_program(text, file.string(), 1);
    const auto refuse = [&](const std::string& what) {
      Error e("ERROR", what);
      e.file = file.string();
      e.line = 1;
      throw e;
    };
    if (!program.body.statements.empty()) refuse("a routine file may hold only functions and procedures");
    const auto named = [&](const auto& f) { return f->name == name; };
    if (std::none_of(program.functions.begin(), program.functions.end(), named))
      refuse("the file defines no function or procedure '" + name + "'");
    Unit& unit = units_.emplace_back();
    for (auto& f : program.functions) {
      f->unit = &unit;
      define(std::move(f), unit);
    }
    return routines_[name] = unit.at(name);
  }
  return nullptr;
}

std::string Interpreter::help(const std::string& wanted) {
  std::string name = wanted;
  for (char& c : name)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  std::map<std::string, std::string> routines;
  for (const std::string& folder : path_) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
      std::string text;
      if (entry.path().extension() != ".orv" || !read_file(entry.path(), text)) continue;
      routines.emplace(entry.path().stem().string(), help_text(text));
    }
  }
  if (const auto found = routines.find(name); found != routines.end())
    return found->second.empty() ? name + " has no help text\n" : found->second;
  if (const auto found = builtins().find(name); found != builtins().end())
    return std::string(found->second.usage) + "\n  " + found->second.summary + "\n";
  if (!name.empty() && is_elementwise(name)) return name + "(x)\n  the function of that name, element by element\n";
  if (!name.empty() && has_procedure(name)) return name + " is a procedure of a loaded module\n";
  if (!name.empty()) throw Error("ERROR", "there is no help for '" + wanted + "'; help without an argument lists all routines");

  std::string list = "Routines (help \"name\" tells more):\n";
  for (const auto& [routine, text] : routines) list += "  " + padded(routine, 14) + text.substr(0, text.find('\n')) + "\n";
  list += "Built in:\n";
  for (const auto& [builtin, row] : builtins()) list += "  " + padded(builtin, 14) + row.summary + "\n";
  list +=
      "  abs sqrt exp log log10 sin cos tan asin acos atan sinh cosh tanh floor ceil round real imag conj: element by element\n";
  return list;
}

}  // namespace orv
