#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <thread>

#include "operation_table/operation.h"
#include "orb-gnss/catalogue.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/results.h"

namespace orb::ctl {
namespace {

constexpr char kErrorLog[] = "/var/log/orbset-errors.log";

void explain(const Options& options, unsigned int result) {
  Json meanings = Json::array();
  std::string text = result == 0 ? "0: the operation did what it was asked to\n" : "";
  for (const std::string& line : explainResult(result)) {
    meanings.push_back(line);
    text += line + "\n";
  }
  const std::string whole = explainCombination(result);
  text += whole.empty() ? "" : whole + "\n";
  show(options, "explain", {{"result", result}, {"bits", meanings}, {"meaning", whole}}, text);
}

/// Bytes in hexadecimal, with blanks between them or without.
std::string bytesFrom(const std::vector<std::string>& words) {
  std::string bytes;
  for (const std::string& word : words) {
    if (word.empty() || word.size() % 2 != 0) {
      throw Failure(ExitStatus::WrongUse, fmt::format("'{}' is no bytes in hexadecimal", word),
                    "as in: orbctl raw 64 07");
    }
    for (std::size_t i = 0; i < word.size(); i += 2) {
      unsigned int byte = 0;
      const char* const end = word.data() + i + 2;
      if (std::from_chars(word.data() + i, end, byte, 16).ptr != end) {
        throw Failure(ExitStatus::WrongUse, fmt::format("'{}' is no bytes in hexadecimal", word),
                      "as in: orbctl raw 64 07");
      }
      bytes += static_cast<char>(byte);
    }
  }
  return bytes;
}

std::string hex(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    text += fmt::format("{}{:02X}", text.empty() ? "" : " ", static_cast<unsigned char>(c));
  }
  return text;
}

std::string describeMessage(const std::string& payload) {
  const auto at = [&](std::size_t i) {
    return i < payload.size() ? static_cast<unsigned char>(payload[i])
                              : static_cast<unsigned char>(0);
  };
  const bool hasSubId = at(0) >= 0x62 && at(0) <= 0x6F;
  return orbGetMessageDescription({at(0), hasSubId ? at(1) : static_cast<unsigned char>(0)}, 0);
}

constexpr unsigned char kRefused = 0x84;

void raw(Session& session, const Options& options, const std::string& payload) {
  const Values outcome = session.call("exchangeRaw", {payload, std::string()});
  // Each reply stands after its length, in two bytes.
  const auto& replies = std::get<std::string>(outcome[1]);
  Json data = Json::array();
  std::string text = fmt::format("> {}  {}\n", hex(payload), describeMessage(payload));
  bool isRefused = false;
  for (std::size_t at = 0; at + 2 <= replies.size();) {
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(replies[at]) * 256 +
                                                 static_cast<unsigned char>(replies[at + 1]));
    const std::string reply = replies.substr(at + 2, length);
    isRefused |= static_cast<unsigned char>(reply.front()) == kRefused;
    data.push_back({{"bytes", hex(reply)}, {"description", describeMessage(reply)}});
    text += fmt::format("< {}  {}\n", hex(reply), describeMessage(reply));
    at += 2 + length;
  }
  const Json whole{{"sent", hex(payload)}, {"replies", data}};
  if (!isRefused || !options.isJson) {
    show(options, "raw", whole, text);
  }
  if (isRefused) {
    throw Failure(ExitStatus::Refused, "the receiver refuses this message",
                  "see its length and meaning with: orbctl messages", 0, whole.dump());
  }
}

void messages(const Options& options, const std::string& id) {
  const std::string wanted = id.empty() ? "" : bytesFrom({id});
  Json data = Json::array();
  std::string text;
  for (const ORBMessageInfo& row : ORBMessages) {
    const bool isMarker = row.msgId.id == 0 || row.msgId.id == 0xFF;
    const bool isWanted =
        wanted.empty() ||
        (row.msgId.id == static_cast<unsigned char>(wanted[0]) &&
         (wanted.size() < 2 || row.msgId.subId == static_cast<unsigned char>(wanted[1])));
    if (isMarker || !isWanted) {
      continue;
    }
    // Two descriptions have bytes that are no text.
    std::string description;
    for (const char c : std::string(row.description)) {
      description += c >= ' ' && c <= '~' ? c : '?';
    }
    const std::string length = row.minLength == row.maxLength
                                   ? std::to_string(row.minLength)
                                   : fmt::format("{}-{}", row.minLength, row.maxLength);
    data.push_back({{"id", fmt::format("{:02X} {:02X}", row.msgId.id, row.msgId.subId)},
                    {"shortest", row.minLength},
                    {"longest", row.maxLength},
                    {"description", description}});
    text += fmt::format("{:02X} {:02X}  {:>7}  {}\n", row.msgId.id, row.msgId.subId, length,
                        description);
  }
  if (data.empty()) {
    throw Failure(ExitStatus::WrongUse, fmt::format("the catalogue has no message {}", id),
                  "see all with: orbctl messages");
  }
  show(options, "messages", {{"messages", data}}, text);
}

void log(const Options& options, bool follows) {
  std::ifstream file(kErrorLog);
  if (!file) {
    throw Failure(ExitStatus::NotSent, fmt::format("cannot read {}", kErrorLog),
                  "it is made when the library is first used by who may write there");
  }
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  show(options, "log", {{"lines", lines}}, text);
  if (!follows) {
    return;
  }
  for (;;) {
    file.clear();
    for (std::string line; std::getline(file, line);) {
      show(options, "log", {{"lines", {line}}}, line + "\n");
    }
    std::cout.flush();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  }
}

Value argumentFrom(const Argument& argument, const std::string& text) {
  const auto refuse = [&](const std::string& range) {
    return Failure(ExitStatus::WrongUse,
                   fmt::format("{} is {}, not '{}'", argument.name, range, text),
                   "nothing was sent");
  };
  switch (argument.type) {
    case Argument::Type::Boolean:
      if (text != "on" && text != "off") {
        throw refuse("on or off");
      }
      return text == "on";
    case Argument::Type::Text:
      return text;
    default:
      break;
  }
  const std::string range =
      fmt::format("{} .. {} {}", argument.lowest, argument.highest, argument.unit);
  double number = 0;
  const char* const end = text.data() + text.size();
  if (std::from_chars(text.data(), end, number).ptr != end || text.empty() ||
      !(number >= argument.lowest && number <= argument.highest)) {
    throw refuse(range);
  }
  if (argument.type == Argument::Type::Number) {
    return number;
  }
  if (number != static_cast<double>(static_cast<long long>(number))) {
    throw refuse(range);
  }
  return static_cast<long long>(number);
}

Value emptyValue(Argument::Type type) {
  switch (type) {
    case Argument::Type::Boolean:
      return false;
    case Argument::Type::Integer:
      return 0LL;
    case Argument::Type::Number:
      return 0.0;
    case Argument::Type::Text:
      break;
  }
  return std::string();
}

Json jsonOf(const Value& value) {
  return std::visit([](const auto& held) { return Json(held); }, value);
}

std::size_t inputsOf(const Operation& operation) {
  std::size_t count = 0;
  for (const Argument& argument : operation.arguments()) {
    count += argument.isOutput ? 0 : 1;
  }
  return count;
}

const Operation& operationFor(const std::string& name, std::size_t inputs) {
  std::vector<std::string> names;
  const Operation* other = nullptr;
  for (const Operation& operation : operations()) {
    if (operation.name == name && inputsOf(operation) == inputs) {
      return operation;
    }
    other = operation.name == name ? &operation : other;
    names.emplace_back(operation.name);
  }
  if (other != nullptr) {
    throw Failure(ExitStatus::WrongUse,
                  fmt::format("{} takes {} arguments, not {}", name, inputsOf(*other), inputs),
                  fmt::format("see: orbctl operations {}", name));
  }
  const std::string near = nearest(name, names);
  throw Failure(
      ExitStatus::WrongUse, fmt::format("there is no operation '{}'", name),
      near.empty() ? "see all with: orbctl operations" : fmt::format("did you mean {}?", near));
}

/// Any operation, as the library has it.
void callOperation(Session& session, const Options& options, const std::string& name,
                   const std::vector<std::string>& words) {
  const Operation& operation = operationFor(name, words.size());
  Values arguments;
  std::size_t next = 0;
  for (const Argument& argument : operation.arguments()) {
    arguments.push_back(argument.isOutput ? emptyValue(argument.type)
                                          : argumentFrom(argument, words[next++]));
  }
  session.requireReceiver();
  const Value result = session.callAnyway(name, arguments);
  Json outputs = Json::object();
  std::string text;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Argument& argument = operation.arguments()[i];
    if (argument.isOutput) {
      outputs[std::string(argument.name)] = jsonOf(arguments[i]);
      text += fmt::format("{} = {}{}{}\n", argument.name, textOf(jsonOf(arguments[i])),
                          argument.unit.empty() ? "" : " ", argument.unit);
    }
  }
  const auto* const bits = std::get_if<long long>(&result);
  if (bits != nullptr && *bits != 0 && operation.resultBits != Operation::kNoMask) {
    const auto mask = static_cast<unsigned int>(*bits);
    throw Failure(exitStatusFor(mask), fmt::format("{} returned {}", name, mask),
                  fmt::format("see: orbctl explain {}", mask), mask);
  }
  show(options, "call", {{"operation", name}, {"result", jsonOf(result)}, {"outputs", outputs}},
       fmt::format("result = {}\n{}", textOf(jsonOf(result)), text));
}

std::string signatureOf(const Operation& operation) {
  std::string text = std::string(operation.name) + "(";
  for (const Argument& argument : operation.arguments()) {
    text += fmt::format("{}{}{}", text.back() == '(' ? "" : ", ", argument.isOutput ? "out " : "",
                        argument.name);
  }
  return text + ")";
}

void listOperations(const Options& options, const std::string& name) {
  Json data = Json::array();
  std::string text;
  for (const Operation& operation : operations()) {
    if (!name.empty() && operation.name != name) {
      continue;
    }
    Json arguments = Json::array();
    std::string ranges;
    for (const Argument& argument : operation.arguments()) {
      constexpr const char* kTypes[] = {"switch", "integer", "number", "text"};
      const char* const type = kTypes[static_cast<int>(argument.type)];
      Json row{{"name", argument.name},
               {"type", type},
               {"output", argument.isOutput},
               {"unit", argument.unit}};
      const bool isNumber =
          argument.type == Argument::Type::Integer || argument.type == Argument::Type::Number;
      if (isNumber && !argument.isOutput) {
        row["lowest"] = argument.lowest;
        row["highest"] = argument.highest;
        ranges += fmt::format("    {}: {} .. {} {}\n", argument.name, argument.lowest,
                              argument.highest, argument.unit);
      }
      arguments.push_back(std::move(row));
    }
    data.push_back({{"name", operation.name},
                    {"does", operation.does},
                    {"arguments", arguments},
                    {"longest_ms", operation.longestTime().count()},
                    {"to_know", operation.toKnow}});
    text += fmt::format("{}\n    {}\n", signatureOf(operation), operation.does);
    if (!name.empty()) {
      text += ranges;
      text += operation.toKnow.empty() ? "" : fmt::format("    {}\n", operation.toKnow);
      text += fmt::format("    takes at most {} ms\n", operation.longestTime().count());
    }
  }
  if (data.empty()) {
    operationFor(name, 0);
  }
  show(options, "operations", {{"operations", data}}, text);
}

}  // namespace

void addExpertCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();
  const auto word = std::make_shared<std::string>();
  const auto result = std::make_shared<unsigned int>(0);
  const auto follows = std::make_shared<bool>(false);

  CLI::App* command =
      addCommand(app, "explain", "Says what an operation's result means", chosen,
                 [=](Session&, const Options& options) { explain(options, *result); });
  command->add_option("RESULT", *result, "Such as 13")->required();

  command = addCommand(app, "call", "Calls any operation of the library by its name", chosen,
                       [=](Session& session, const Options& options) {
                         callOperation(session, options, *word, *words);
                       });
  command->add_option("OPERATION", *word, "Its name; orbctl operations lists all")->required();
  command->add_option("ARGUMENT", *words, "Its inputs; on or off for a switch");

  command = addCommand(app, "operations", "Lists the library's operations", chosen,
                       [=](Session&, const Options& options) { listOperations(options, *word); });
  command->add_option("OPERATION", *word, "This one, with all that is known of it");

  command = addCommand(
      app, "raw", "Sends a message, and shows what answers", chosen,
      [=](Session& session, const Options& options) { raw(session, options, bytesFrom(*words)); });
  command->add_option("ID [BYTES]", *words, "Id, sub-id and body in hexadecimal: 64 07")
      ->required();

  command = addCommand(app, "messages", "The catalogue of messages", chosen,
                       [=](Session&, const Options& options) { messages(options, *word); });
  command->add_option("ID", *word, "Those of this id, in hexadecimal: 64, or 6407");

  command = addCommand(app, "log", "The library's error log", chosen,
                       [=](Session&, const Options& options) { log(options, *follows); });
  command->add_flag("-f,--follow", *follows, "Goes on as it grows");
}

}  // namespace orb::ctl
