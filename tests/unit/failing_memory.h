// Memory that runs out when a test says so: list nodes (operator new that may fail) and heap texts
// (strdup, realloc).
#pragma once

enum class memory_of { nodes, texts };

// While it lives, the first `granted` requests of that kind succeed and all later ones fail.
class failing_memory {
  public:
    failing_memory(memory_of kind, int granted);
    ~failing_memory();
    failing_memory(const failing_memory &) = delete;
    failing_memory &operator=(const failing_memory &) = delete;

  private:
    memory_of kind_;
};
