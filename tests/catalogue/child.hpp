// The reader opens its file once a process, so each case runs in a process of its own.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace child {

inline std::string contents(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

inline void write_file(const std::string& file, const std::vector<unsigned char>& bytes) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// A folder that vanishes with its files.
class Folder {
 public:
  Folder() {
    name_ = "/tmp/zent-catalogue-" + std::string(6, 'X');  // the end is replaced
    mkdtemp(name_.data());
  }
  Folder(const Folder&) = delete;
  ~Folder() {
    if (std::system(("rm -rf " + name_).c_str()) != 0) std::perror("rm");
  }
  std::string path(const std::string& file = "") const {
    return name_ + "/" + file;
  }

 private:
  std::string name_;
};

struct Outcome {
  bool lived = false;
  std::string result;  // what the body returned
  std::string errors;  // what it wrote to the standard error stream
};

inline Outcome run(const std::function<std::string()>& body) {
  const Folder folder;
  std::fflush(nullptr);
  const pid_t id = fork();
  if (id == 0) {
    const int errors = open(folder.path("err").c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(errors, 2);
    const std::string result = body();
    std::ofstream(folder.path("out"), std::ios::binary) << result;
    std::fflush(nullptr);
    _exit(0);
  }
  int status = -1;
  waitpid(id, &status, 0);
  return {WIFEXITED(status) && WEXITSTATUS(status) == 0, contents(folder.path("out")), contents(folder.path("err"))};
}

}  // namespace child
