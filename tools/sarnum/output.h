// Output files that come into being whole or not at all.
//
// A file is written under a temporary name in the folder of its target, checked, flushed to
// disk, and only then renamed. Whatever ends the command before that, an exception or a
// signal, removes the temporary file and leaves the old one as it was.
#ifndef SARNUM_TOOL_OUTPUT_H
#define SARNUM_TOOL_OUTPUT_H

#include <initializer_list>
#include <string>
#include <vector>

namespace sarnum::tool {

class OutputFile {
 public:
  /// Makes sure that the file can be put in place later, and makes the temporary file. A name
  /// that is a symbolic link stands for what it points at.
  /// @param inputs  the files being read, none of which the output may replace.
  OutputFile(const std::string& name, bool overwrite, const std::vector<std::string>& inputs);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// As the user wrote it, for messages.
  const std::string& name() const { return name_; }
  const std::string& target() const { return target_; }
  const std::string& temporary() const { return temporary_; }

 private:
  friend void put_in_place(std::initializer_list<OutputFile*> files);

  void flush_to_disk() const;
  void rename_to_target(bool keep_old);
  void take_back();
  void discard_temporary() noexcept;
  void remove_stale_companions() const noexcept;

  std::string name_;
  std::string target_;
  std::string temporary_;
  bool overwrite_;
  enum class Placed { no, as_new_file, exchanged_with_old, instead_of_old };
  Placed placed_ = Placed::no;
  int signal_slot_ = -1;
};

/// Puts finished files in place, all or none; null pointers are passed over.
void put_in_place(std::initializer_list<OutputFile*> files);

/// Signals that end the command remove the temporary files first; once the files are in place, the
/// command ends with status 0 instead. A file that grows beyond its limit becomes an error like any
/// other.
void install_signal_handlers();

}  // namespace sarnum::tool

#endif
