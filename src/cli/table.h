#pragma once
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace orvalo::cli {

// A table that is printed while it is made: a header line, then one line a row. Widths are in
// characters; a longer text pushes the rest of its row to the right, the last column is never
// filled up.
class Table {
 public:
  struct Column {
    std::string title;
    std::size_t width;
    bool right = false;  // numbers
  };
  Table(std::ostream& out, std::vector<Column> columns);
  void Add(const std::vector<std::string>& cells);  // as many as there are columns

 private:
  void Print(const std::vector<std::string>& cells);

  std::ostream& out_;
  std::vector<Column> columns_;
};

}  // namespace orvalo::cli
