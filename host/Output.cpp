#include "host/Output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "host/Text.h"

namespace host {

namespace {

constexpr std::size_t kWidthOfAFile = 100;
constexpr std::size_t kNarrowest = 60;

// Bytes that are not UTF-8 would stop the writing; they are replaced.
std::string JsonText(const Json& data, int lvIndent) {
  return data.dump(lvIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

// What was written to stdout before comes before it on a terminal too.
void WriteMessage(const std::string& zvText) {
  std::fflush(stdout);
  std::fwrite(zvText.data(), 1, zvText.size(), stderr);
}

}  // namespace

std::size_t Output::Width() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
    return kWidthOfAFile;
  }
  return std::max<std::size_t>(size.ws_col, kNarrowest);
}

bool Output::ShowsProgress() const {
  return !m_bJson && isatty(STDERR_FILENO) != 0;
}

void Output::Write(std::string_view zvText) {
  if (std::fwrite(zvText.data(), 1, zvText.size(), stdout) != zvText.size() && m_lWriteError == 0) {
    m_lWriteError = errno;
  }
}

void Output::Text(std::string_view zvText) {
  if (!m_bJson) {
    Write(zvText);
  }
}

void Output::Data(const Json& data) {
  if (m_bJson) {
    Write(JsonText(data, 2));
  }
}

void Output::Message(const std::string& zvKind, const std::string& zvText) {
  WriteMessage(m_bJson ? JsonText({{zvKind, zvText}}, -1) : zvKind + ": " + Shown(zvText) + "\n");
}

void Output::Note(const std::string& zvText) {
  Message("note", zvText);
}

void Output::Warning(const std::string& zvText) {
  Message("warning", zvText);
}

void Output::UsageError(const std::string& zvText) {
  WriteMessage(m_bJson ? JsonText({{"error", {{"number", nullptr}, {"description", zvText}}}}, -1)
                       : "qm-ordering: " + Shown(zvText) + "\n");
}

void Output::Error(std::int32_t lvNumber, const std::string& zvDescription,
                   const qm_ordering::LastFailureInfo& cause) {
  const bool bTellsMore = cause.Number != 0 && zvDescription.find(cause.Description) == std::string::npos;
  if (m_bJson) {
    Json error = {{"number", lvNumber}, {"description", zvDescription}};
    if (bTellsMore) {
      error["cause"] = {
          {"number", cause.Number}, {"description", cause.Description}, {"operation", cause.Operation}};
    }
    WriteMessage(JsonText({{"error", error}}, -1));
    return;
  }
  WriteMessage("error " + std::to_string(lvNumber) + ": " + Shown(zvDescription) + "\n");
  if (bTellsMore) {
    WriteMessage("  caused by " + std::to_string(cause.Number) + ": " + Shown(cause.Description) + "\n");
  }
}

bool Output::Finish() {
  if (std::fflush(stdout) != 0 && m_lWriteError == 0) {
    m_lWriteError = errno;
  }
  if (m_lWriteError == 0 && std::ferror(stdout) == 0) {
    return true;
  }
  Error(qm_ordering::failure::kFileAccess,
        "Not all of the output could be written to standard output: " +
            std::generic_category().message(m_lWriteError) + "." +
            (m_bChange ? " What the command did is done all the same." : ""));
  return false;
}

}  // namespace host
