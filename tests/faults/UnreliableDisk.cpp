#include "tests/faults/UnreliableDisk.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "tests/support/TempFolder.h"

namespace test {

namespace {

constexpr std::size_t kSector = 512;

std::size_t Below(std::mt19937_64& orChance, std::size_t lvEnd) {
  return std::uniform_int_distribution<std::size_t>(0, lvEnd - 1)(orChance);
}

}  // namespace

UnreliableDisk::UnreliableDisk(std::string zvFolder, std::size_t lvRequestsUntilPowerFails)
    : m_zFolder(std::move(zvFolder)), m_lLimit(lvRequestsUntilPowerFails) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(m_zFolder)) {
    int lFile = kNewFolder;
    if (entry.is_regular_file()) {
      lFile = static_cast<int>(m_oFiles.size());
      m_oFiles.push_back({ReadFile(entry.path()), {}});
    }
    m_oNow.emplace(Relative(entry.path()), lFile);
  }
  m_oFlushed = m_oNow;
}

int UnreliableDisk::Before(const SystemRequest&) {
  if (IsOff()) {
    return EIO;
  }
  ++m_lRequests;
  // The last request is the one at which the power fails: it is not done.
  return IsOff() ? EIO : 0;
}

void UnreliableDisk::After(const SystemRequest& request) {
  const std::string zPath = Relative(request.Path);
  switch (request.Kind) {
    case SystemCall::Open:
      if (request.Creates && !request.WasThere) {
        m_oFiles.emplace_back();
        Name(zPath, static_cast<int>(m_oFiles.size()) - 1);
      }
      break;
    case SystemCall::Write:
      FileAt(zPath).Pending.push_back({false,
                                       static_cast<std::uint64_t>(request.Offset),
                                       {static_cast<const char*>(request.Data), request.Size}});
      break;
    case SystemCall::Truncate:
      FileAt(zPath).Pending.push_back({true, request.Size, {}});
      break;
    case SystemCall::Sync:
      if (zPath.empty() || m_oNow.at(zPath) == kNewFolder) {
        FlushFolder(zPath);
      } else {
        File& file = FileAt(zPath);
        for (const Change& change : file.Pending) {
          Apply(file.Flushed, change);
        }
        file.Pending.clear();
      }
      break;
    case SystemCall::Delete:
      Name(zPath, kNone);
      break;
    case SystemCall::Rename: {
      const int lFile = m_oNow.at(zPath);
      Name(Relative(request.NewPath), lFile);
      if (!request.KeepsOld) {
        Name(zPath, kNone);
      }
      break;
    }
    case SystemCall::MakeFolder:
      Name(zPath, kNewFolder);
      break;
    default:
      break;
  }
}

std::size_t UnreliableDisk::Unflushed() const {
  std::size_t lCount = m_oPendingNames.size();
  for (const File& file : m_oFiles) {
    lCount += file.Pending.size();
  }
  return lCount;
}

void UnreliableDisk::PutLeft(const std::string& zvFolder) const {
  std::vector<std::string> contents;
  for (const File& file : m_oFiles) {
    contents.push_back(file.Flushed);
  }
  Write(zvFolder, m_oFlushed, contents);
}

void UnreliableDisk::PutLeft(const std::string& zvFolder, std::mt19937_64& orChance) const {
  std::vector<std::string> contents;
  for (const File& file : m_oFiles) {
    std::string zContent = file.Flushed;
    for (const Change& change : file.Pending) {
      switch (Below(orChance, 3)) {
        case 0:
          break;
        case 1:
          Apply(zContent, change);
          break;
        default:
          ApplyPart(zContent, change, orChance);
      }
    }
    contents.push_back(std::move(zContent));
  }
  // File systems keep the order in which names were changed.
  Names names = m_oFlushed;
  const std::size_t lKept = Below(orChance, m_oPendingNames.size() + 1);
  for (std::size_t i = 0; i < lKept; ++i) {
    names[m_oPendingNames[i].Path] = m_oPendingNames[i].File;
  }
  Write(zvFolder, names, contents);
}

std::string UnreliableDisk::Relative(const std::string& zvPath) const {
  return zvPath.size() <= m_zFolder.size() ? std::string() : zvPath.substr(m_zFolder.size() + 1);
}

std::string UnreliableDisk::FolderOf(const std::string& zvPath) {
  const std::size_t lSlash = zvPath.rfind('/');
  return lSlash == std::string::npos ? std::string() : zvPath.substr(0, lSlash);
}

void UnreliableDisk::Name(const std::string& zvPath, int lvFile) {
  m_oNow[zvPath] = lvFile;
  m_oPendingNames.push_back({zvPath, lvFile});
}

void UnreliableDisk::FlushFolder(const std::string& zvFolder) {
  std::erase_if(m_oPendingNames, [&](const Naming& naming) {
    if (FolderOf(naming.Path) != zvFolder) {
      return false;
    }
    m_oFlushed[naming.Path] = naming.File;
    return true;
  });
}

UnreliableDisk::File& UnreliableDisk::FileAt(const std::string& zvPath) {
  const auto found = m_oNow.find(zvPath);
  if (found == m_oNow.end() || found->second < 0) {
    throw std::logic_error("a request on " + zvPath + ", which was not seen to be made");
  }
  return m_oFiles[static_cast<std::size_t>(found->second)];
}

void UnreliableDisk::Apply(std::string& orContent, const Change& change) {
  if (change.Truncates) {
    orContent.resize(change.Offset);
    return;
  }
  orContent.resize(std::max(orContent.size(), change.Offset + change.Data.size()));
  orContent.replace(change.Offset, change.Data.size(), change.Data);
}

void UnreliableDisk::ApplyPart(std::string& orContent, const Change& change, std::mt19937_64& orChance) {
  for (std::size_t lAt = 0; lAt < change.Data.size(); lAt += kSector) {
    if (Below(orChance, 2) == 0) {
      Apply(orContent, {false, change.Offset + lAt, change.Data.substr(lAt, kSector)});
    }
  }
}

void UnreliableDisk::Write(const std::string& zvFolder, const Names& names,
                           const std::vector<std::string>& contents) {
  std::filesystem::remove_all(zvFolder);
  std::filesystem::create_directories(zvFolder);
  // In the order of their names: a folder comes before what is in it.
  for (const auto& [zName, lFile] : names) {
    const std::string zPath = zvFolder + "/" + zName;
    if (lFile == kNone || !std::filesystem::exists(std::filesystem::path(zPath).parent_path())) {
      // Also a name in a folder whose own name is lost.
      continue;
    }
    if (lFile == kNewFolder) {
      std::filesystem::create_directory(zPath);
    } else {
      WriteFile(zPath, contents[static_cast<std::size_t>(lFile)]);
    }
  }
}

}  // namespace test
