#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "bench/Line.h"

namespace bench {

// The work that is compared, done by each program in its own way on a store of its own. Each call does what a
// host would have done when its user acted: the same statements, in the same transactions, on disk when it
// returns.
class OrderProgram {
 public:
  virtual ~OrderProgram() = default;

  // Takes what the user has entered into the form in which the program holds it; not part of what is
  // measured.
  virtual void Enter(std::vector<Line> lines) = 0;

  // Looks whether the current order holds the first entered item; adds the line or adds its quantity to the
  // one that is there; brings the total up to date.
  virtual void AddLine() = 0;
  // Writes quantities and prices of the entered lines, all or none, then the total.
  virtual void ChangeLines() = 0;
  // Writes the header, every text of it zvText, and keeps its values in the settings file as the defaults of
  // the next order.
  virtual void SaveSummary(const std::string& zvText) = 0;
  // Reads the lines of the current order into memory, found by item number in any letter case, and checks
  // their quantities against the packs. The lines stay until the next call. Answers how many.
  virtual std::size_t LoadLines() = 0;
  // Reads header and lines as a program does that shows the order, and lets go of them.
  virtual void ShowOrder() = 0;
  // The document of the order whose lines were loaded last.
  virtual std::string Document() = 0;
  // Reads the personal lists and their lines and writes the document of all of them to PersonalLists.xml in
  // the store's folder.
  virtual void SaveLists() = 0;
  // Reads the submitted orders, by number and date, into memory, found by id. They stay until the next call.
  // Answers how many.
  virtual std::size_t LoadHistory() = 0;
  // Reads them likewise, answers the document of the history, and lets go of them.
  virtual std::string ShowHistory() = 0;
  // Imports the older program's tables, in the folder "older" of the store's, in one transaction. Answers how
  // many orders.
  virtual std::size_t ImportHistory() = 0;
  // Removes all submitted orders; not part of what is measured.
  virtual void EmptyHistory() = 0;
  // Removes the line again; not part of what is measured.
  virtual void RemoveLine(const std::string& zvItemNumber) = 0;
};

// zvFolder holds Orders.mdb with one current order of number 1, and settings.ini that names the folder.
std::unique_ptr<OrderProgram> LibraryProgram(const std::string& zvFolder);
std::unique_ptr<OrderProgram> EngineProgram(const std::string& zvFolder);
std::unique_ptr<OrderProgram> SqliteCppProgram(const std::string& zvFolder);
std::unique_ptr<OrderProgram> SociProgram(const std::string& zvFolder);

}  // namespace bench
