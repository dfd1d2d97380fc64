// orv: the shell. Interactive with line editing, or a script runner.
#include <readline/history.h>
#include <readline/readline.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "host/lang/interpreter.hpp"

namespace {

namespace fs = std::filesystem;

constexpr const char* version = "orv 0.1.0";

struct Setup {
  std::string module;
  bool no_module = false;
  std::string code;
  bool has_code = false;               // the text may be empty
  std::vector<std::string> arguments;  // script first
};

const char* environment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? value : nullptr;
}

fs::path program_folder() {
  std::error_code failed;
  const fs::path program = fs::read_symlink("/proc/self/exe", failed);
  return failed ? fs::current_path() : program.parent_path();
}

bool is_there(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

// A program that was not installed stands in a build tree, whose cache knows the sources.
fs::path source_tree(const fs::path& folder) {
  std::ifstream cache(folder.parent_path() / "CMakeCache.txt");
  const std::string key = "CMAKE_HOME_DIRECTORY:INTERNAL=";
  for (std::string line; std::getline(cache, line);)
    if (line.rfind(key, 0) == 0) return line.substr(key.size());
  return {};
}

// Folders of ORVPATH first, then those that belong to the program.
std::vector<std::string> routine_path(const fs::path& folder) {
  std::vector<std::string> path;
  if (const char* given = environment("ORVPATH")) {
    std::istringstream parts(given);
    for (std::string part; std::getline(parts, part, ':');)
      if (!part.empty()) path.push_back(part);
  }
  for (const fs::path& candidate : {folder.parent_path() / "share" / "orv", source_tree(folder) / "orv"})
    if (candidate.is_absolute() && is_there(candidate)) path.push_back(candidate.string());
  return path;
}

fs::path find_module(const Setup& setup, const fs::path& folder) {
  if (!setup.module.empty()) return setup.module;
  if (const char* given = environment("ORVMODULE")) return given;
  const fs::path up = folder.parent_path();
  for (const fs::path& place : {folder, up / "lib", up})
    if (is_there(place / "orv_zent.so")) return place / "orv_zent.so";
  return {};
}

// The module looks for its message texts where these variables say, as a prefix of the file name.
void find_catalogues(const fs::path& module, const fs::path& folder) {
  const auto find = [&](const char* variable, const char* file) {
    if (environment(variable)) return;
    for (const fs::path& place : {fs::absolute(module).parent_path(), folder.parent_path() / "lib", folder.parent_path(),
                                  folder.parent_path() / "share" / "orv-zent"}) {
      if (!is_there(place / file)) continue;
      setenv(variable, (place.string() + "/").c_str(), 1);
      return;
    }
  };
  find("ZENTERRPATH", "zenterr.bin");
  find("ZENTSERRPATH", "zents_e.bin");
}

void start_module(const Setup& setup, orv::Interpreter& interpreter) {
  const fs::path folder = program_folder();
  interpreter.set_path(routine_path(folder));
  interpreter.set_module_path({folder.string(), (folder.parent_path() / "lib").string(), folder.parent_path().string(),
                               (folder.parent_path() / "examples").string()});
  if (setup.no_module) return;
  const fs::path module = find_module(setup, folder);
  if (module.empty()) {
    std::fputs("orv: the module orv_zent.so was not found (--module, ORVMODULE); only the language is there\n", stderr);
    return;
  }
  find_catalogues(module, folder);
  interpreter.load_module(fs::absolute(module).string());
}

void report(const orv::Error& error) {
  std::fflush(stdout);
  std::string place = error.file;
  if (error.line) place += ":" + std::to_string(error.line);
  std::string text = error.what();
  if (error.column) text = "column " + std::to_string(error.column) + ": " + text;
  std::fprintf(stderr, "%s%s%s\n", place.empty() ? "orv" : place.c_str(), ": ", text.c_str());
}

// Runs something that may fail, and returns the exit status. `ended` is set when the program asked to end.
template <class Body>
int guarded(const Body& body, bool& ended) {
  try {
    body();
    return 0;
  } catch (const orv::Exit& request) {
    ended = true;
    return request.status;
  } catch (const orv::Error& error) {
    report(error);
  } catch (const std::exception& error) {
    std::fflush(stdout);
    std::fprintf(stderr, "orv: %s\n", error.what());
  }
  return 1;
}

// ---- Interactive ----

std::string history_file() {
  const char* home = environment("HOME");
  return home ? std::string(home) + "/.orv_history" : "";
}

bool read_line(const char* prompt, std::string& line) {
  char* text = readline(prompt);
  if (!text) return false;
  line = text;
  std::free(text);
  return true;
}

void prepare_line_editing() {
  struct sigaction action = {};
  action.sa_handler = [](int) { orv::Interpreter::interrupt(); };
  sigaction(SIGINT, &action, nullptr);
  rl_signal_event_hook = [] {  // Ctrl-C at the prompt gives the line up
    rl_replace_line("", 0);
    rl_done = 1;
    return 0;
  };
  rl_bind_key('\t', rl_insert);
  using_history();
  stifle_history(2000);
  if (!history_file().empty()) read_history(history_file().c_str());
}

// One statement or block, which may take several lines. False at the end of the input.
bool read_input(orv::Interpreter& interpreter, std::string& input) {
  std::string line;
  input.clear();
  for (const char* prompt = "orv> "; read_line(prompt, line); prompt = "...> ") {
    if (orv::Interpreter::take_interrupt()) {
      input.clear();
      std::puts("");
      return true;
    }
    if (!line.empty()) add_history(line.c_str());
    input += line + "\n";
    if (!interpreter.needs_more(input)) return true;
  }
  return false;
}

int interactive(orv::Interpreter& interpreter) {
  prepare_line_editing();
  std::printf("%s - help lists the routines, exit ends\n", version);
  std::string input;
  bool ended = false;
  int status = 0;
  while (!ended) {
    if (!read_input(interpreter, input)) {
      std::puts("");
      status = 0;
      break;
    }
    status = guarded([&] { interpreter.run(input, "input", 1, true); }, ended);
    std::fflush(stdout);
  }
  if (!history_file().empty()) write_history(history_file().c_str());
  return status;
}

int run(const Setup& setup) {
  bool ended = false;
  orv::set_information_sink(
      [](void*, const char* text) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s\n", text);
      },
      nullptr);
  orv::Interpreter interpreter;
  int status = guarded([&] { start_module(setup, interpreter); }, ended);
  if (status != 0) return status;
  std::vector<orv::Value> texts;
  for (std::size_t k = 1; k < setup.arguments.size(); ++k) texts.push_back(orv::Value::text(setup.arguments[k]));
  interpreter.set_global("args", texts.empty() ? orv::Value::array(ORV_TYP_STRING, {0}) : orv::stack_values(texts));
  if (setup.has_code) {
    status = guarded([&] { interpreter.run(setup.code, "-e", 1, true); }, ended);
  } else if (!setup.arguments.empty()) {
    status = guarded([&] { interpreter.run_file(setup.arguments[0]); }, ended);
  } else if (isatty(STDIN_FILENO)) {
    status = interactive(interpreter);
  } else {
    const std::string text{std::istreambuf_iterator<char>(std::cin), {}};
    status = guarded([&] { interpreter.run(text, "stdin"); }, ended);
  }
  return std::fflush(stdout) == 0 ? status : 1;
}

}  // namespace

int main(int argc, char** argv) {
  Setup setup;
  CLI::App app{"A shell for numerical work: orv [options] [file.orv [arguments...]]. Without a file it is interactive."};
  app.add_option("--module", setup.module, "the module to load instead of orv_zent.so");
  app.add_flag("--no-module", setup.no_module, "load no module");
  const auto* code = app.add_option("-e", setup.code, "run this text and show the values of its expressions");
  app.set_version_flag("--version", version);
  app.prefix_command();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  setup.has_code = code->count() > 0;
  setup.arguments = app.remaining();
  if (!setup.arguments.empty() && setup.arguments[0].size() > 1 && setup.arguments[0][0] == '-') {
    std::fprintf(stderr, "orv: unknown option '%s'; see orv --help\n", setup.arguments[0].c_str());
    return 2;
  }
  return run(setup);
}
