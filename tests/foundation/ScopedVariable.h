// A variable of the environment that is set while a test runs.
#pragma once

#include <cstdlib>
#include <string>

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : m_name(name) {
    setenv(name, value.c_str(), 1);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { unsetenv(m_name); }

 private:
  const char* m_name;
};
