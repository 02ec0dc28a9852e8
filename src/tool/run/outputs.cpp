#include "tool/run/outputs.h"

#include "platform/failure.h"
#include "text/text.h"
#include "tool/script/contents.h"

namespace dravenna {

void Outputs::addInput(const std::string& path) {
  if (path.empty() || path == "-") return;
  const std::lock_guard lock(mutex_);
  inputs_.push_back(path);
}

// The system is asked only when an output is about to take the place of a file.
bool Outputs::isInput(const FileIdentity& file) {
  const std::lock_guard lock(mutex_);
  for (const std::string& input : inputs_) {
    if (const auto identity = files_.identity(input)) known_.insert(*identity);
  }
  inputs_.clear();
  return known_.count(file) != 0;
}

bool Outputs::mayWrite(const std::string& path, std::string_view bytes, Kind kind, bool force) {
  const auto there = files_.identity(path);
  if (there && !there->plain && files_.pathKind(path) == PathKind::Folder)
    throw Failure(fromUtf8(path) + u": is a folder");
  return !there || !there->plain || mayReplace(path, *there, bytes, kind, force);
}

bool Outputs::mayReplace(const std::string& path, const FileIdentity& there, std::string_view bytes, Kind kind,
                         bool force) {
  thread_local std::string old;
  files_.readWhole(path, old);
  if (old == bytes && kind != Kind::Report) return false;
  refuse(path, there, old, kind, force);
  return true;
}

void Outputs::refuse(const std::string& path, const FileIdentity& there, std::string_view old, Kind kind, bool force) {
  const auto refuse = [&](std::string_view why) { throw Failure(fromUtf8(path) + u": " + fromUtf8(why)); };
  if (isInput(there)) refuse("the run reads this file and does not write over it");
  const Contents contents = contentsOf(old, lists_);
  if (force || contents == Contents::Empty) return;
  if (kind == Kind::ExchangeFile) refuse("exists with other contents; --force overwrites it");
  if (kind == Kind::PoFile) {
    if (contents != Contents::PoFile) refuse("is no PO file; --force overwrites it");
    if (holdsTranslations(old)) refuse("holds translations; --force overwrites it");
  } else if (contents != Contents::Other && (kind != Kind::Index || contents != Contents::Index)) {
    refuse(std::string("is ") + nameOf(contents) + ": a report does not take its place");
  }
}

void Outputs::append(const std::string& path, std::string_view present, std::string_view lines) {
  constexpr std::size_t kEnoughToTell = 4096;
  if (const auto there = files_.identity(path))
    refuse(path, *there, present.substr(0, kEnoughToTell), Kind::Report, false);
  files_.append(path, lines);
}

bool Outputs::write(const std::string& path, std::string_view bytes, Kind kind, bool force) {
  const auto there = files_.identity(path);
  if (there && !there->plain) {
    files_.writeDevice(path, bytes);
    return true;
  }
  if (there && !mayReplace(path, *there, bytes, kind, force)) return false;
  const auto replacement = files_.replace(path);
  replacement->write(bytes);
  replacement->close();
  replacement->place();
  return true;
}

}  // namespace dravenna
