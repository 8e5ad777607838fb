#include "orbctl/schema.h"

#include "operation_table/operation.h"
#include "orbctl/settings.h"

namespace orb::ctl {
namespace {

// What each command has beside "ok" and "command". A text is a type, or the name of another shape
// after '#'; an array has one shape for all its members; an object has the members that it names,
// those with a '?' not always. "#values", "#changes", "#differences", "#key-rows" and "#reasons"
// are made from the table of settings.
constexpr char kShapes[] = R"json({
  "status": {"firmware": "#info", "navigation": "#position", "time": "#time", "survey": "#survey",
             "interference": "#interference"},
  "detect": {"receiver": "boolean"},
  "info": {"kernel": "string", "odm": "string", "revision": "string"},
  "time": {"time_of_week_ms": "integer", "sub_ms_ns": "integer", "gps_week": "integer",
           "leap_seconds": "integer", "valid": "integer", "utc": "string|null"},
  "position": {"fix": "string", "satellites": "integer", "gps_week": "integer",
               "time_of_week": "number", "latitude": "number|null", "longitude": "number|null",
               "ellipsoid_altitude": "number|null", "sea_level_altitude": "number|null"},
  "satellites": {"in_fix": "integer", "fix": "string"},
  "interference": {"detection": "boolean", "status": "integer", "interference": "string"},
  "doctor": {"findings": "#findings"},
  "get": "#values",
  "pulse": "#values",
  "constellations": "#values",
  "masks": "#values",
  "set": {"dry_run": "boolean", "settings": "#changes"},
  "keys": "#key-rows",
  "backup": {"file": "string", "text?": "string", "left_out": "#reasons"},
  "restore": {"dry_run": "boolean", "settings": "#differences"},
  "survey": {"mode": "string", "length": "integer", "deviation": "integer", "latitude": "number",
             "longitude": "number", "altitude": "number", "present_mode?": "string",
             "surveyed?": "integer"},
  "antenna-power": {"requested": "string"},
  "defaults": {"done": "boolean"},
  "restart": {"done": "boolean"},
  "reset": {"done": "boolean"},
  "uart": {"done": "boolean"},
  "identity": {"file": "string", "text": "string"},
  "explain": {"result": "integer", "bits": ["string"], "meaning": "string"},
  "call": {"operation": "string", "result": "boolean|integer|string", "outputs": "object"},
  "operations": {"operations": [{"name": "string", "does": "string", "arguments": [
      {"name": "string", "type": "string", "output": "boolean", "unit": "string",
       "lowest?": "number", "highest?": "number"}], "longest_ms": "integer", "to_know": "string"}]},
  "raw": {"sent": "string", "replies": "#replies"},
  "messages": {"messages": [{"id": "string", "shortest": "integer", "longest": "integer",
                             "description": "string"}]},
  "log": {"entries": [{"line": "string", "time?": "string", "failure?": "string",
                       "message?": "string", "description?": "string"}]},
  "help": {"text": "string"},
  "version": {"version": "string"},
  "completion": {"shell": "string", "script": "string"},
  "schema": {"schema": "object"}
})json";

// Shapes that stand in others alone.
constexpr char kParts[] = R"json({
  "failure": {"error": {"status": "integer", "result": "integer", "text": "string",
                        "hint": "string"},
              "findings?": "#findings", "sent?": "string", "replies?": "#replies",
              "values?": "#values", "keys?": "#key-rows", "backup?": "#backup",
              "status_found?": {"firmware?": "#info", "navigation?": "#position", "time?": "#time",
                                "survey?": "#survey", "interference?": "#interference"},
              "failed?": "string", "changed?": ["string"], "not_tried?": ["string"]},
  "findings": [{"what": "string", "state": "string", "found": "string", "next_step": "string"}],
  "replies": [{"bytes": "string", "description": "string",
               "fields": [{"name": "string", "value": "string", "unit": "string"}]}],
  "target": {"mode": "string", "length?": "integer", "latitude?": "number", "longitude?": "number",
             "altitude?": "number"}
})json";

/// An object that has these members and no others.
Json closedObject(Json properties, Json required) {
  return {{"type", "object"},
          {"properties", std::move(properties)},
          {"required", std::move(required)},
          {"additionalProperties", false}};
}

Json schemaOf(const Json& shape, const Json& shapes);

Json typeOf(const std::string& text, const Json& shapes) {
  if (text.front() == '#') {
    return schemaOf(shapes.at(text.substr(1)), shapes);
  }
  Json types = Json::array();
  for (std::size_t at = 0; at <= text.size(); at = std::min(text.find('|', at), text.size()) + 1) {
    types.push_back(text.substr(at, text.find('|', at) - at));
  }
  return {{"type", types.size() == 1 ? types.front() : types}};
}

Json schemaOf(const Json& shape, const Json& shapes) {
  if (shape.is_string()) {
    return typeOf(shape.get<std::string>(), shapes);
  }
  if (shape.is_array()) {
    return {{"type", "array"}, {"items", schemaOf(shape.front(), shapes)}};
  }
  Json properties = Json::object();
  Json required = Json::array();
  for (const auto& [name, member] : shape.items()) {
    const bool isOptional = name.back() == '?';
    const std::string plain = isOptional ? name.substr(0, name.size() - 1) : name;
    properties[plain] = schemaOf(member, shapes);
    if (!isOptional) {
      required.push_back(plain);
    }
  }
  return closedObject(std::move(properties), std::move(required));
}

Json shapeOf(const Setting& setting) {
  switch (setting.kind) {
    case Setting::Kind::Number:
      return "integer";
    case Setting::Kind::Switch:
      return "boolean";
    case Setting::Kind::Word:
      return "string";
    case Setting::Kind::Words:
      break;
  }
  return Json::array({"string"});
}

/// A value that cannot be read is null.
Json orNull(const Json& shape) {
  return shape.is_string() ? shape.get<std::string>() + "|null" : "array|null";
}

void addSettings(Json& shapes) {
  for (const Setting& setting : settings()) {
    const std::string key = std::string(setting.key) + "?";
    const Json value = shapeOf(setting);
    shapes["values"][key] = value;
    shapes["reasons"][key] = "string";
    shapes["changes"][key] = {{"old", orNull(value)}, {"new", value}, {"changed", "boolean"}};
    shapes["differences"][key] = {{"old", orNull(value)}, {"new", value}};
    shapes["key-rows"][key] = {{"what", "string"},   {"range", "string"},
                               {"unit", "string"},   {"reads", "string"},
                               {"writes", "string"}, {"value?", orNull(value)}};
  }
  shapes["differences"]["survey?"] = "#target";
}

/// What a call of each operation has for outputs. A mask is 0: another one is a failure.
Json callsOf(std::span<const Operation> operations, const Json& shapes) {
  Json calls = Json::array();
  for (const Operation& operation : operations) {
    Json outputs = Json::object();
    for (const Argument& argument : operation.arguments()) {
      constexpr const char* kTypes[] = {"boolean", "integer", "number", "string"};
      if (argument.isOutput) {
        outputs[std::string(argument.name)] = kTypes[static_cast<int>(argument.type)];
      }
    }
    Json members{{"operation", {{"const", operation.name}}},
                 {"outputs", schemaOf(outputs, shapes)}};
    if (operation.resultBits != Operation::kNoMask) {
      members["result"] = {{"const", 0}};
    }
    calls.push_back({{"properties", std::move(members)}});
  }
  return calls;
}

Json withNames(Json schema, bool isSuccess, const std::string& command) {
  Json& properties = schema["properties"];
  Json& required = schema["required"];
  properties["ok"] = {{"const", isSuccess}};
  required.push_back("ok");
  if (isSuccess) {
    properties["command"] = {{"const", command}};
    required.push_back("command");
  }
  return schema;
}

}  // namespace

Json jsonSchema() {
  const Json commands = Json::parse(kShapes);
  Json shapes = commands;
  shapes.update(Json::parse(kParts));
  addSettings(shapes);
  Json definitions{{"failure", withNames(schemaOf(shapes["failure"], shapes), false, "")}};
  for (const auto& [command, shape] : commands.items()) {
    definitions[command] = withNames(schemaOf(shape, shapes), true, command);
  }
  definitions["call"]["anyOf"] = callsOf(operations(), shapes);
  Json choices = Json::array();
  for (const auto& [name, definition] : definitions.items()) {
    choices.push_back({{"$ref", "#/$defs/" + name}});
  }
  return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
          {"title", "Output of orbctl --json"},
          {"oneOf", std::move(choices)},
          {"$defs", std::move(definitions)}};
}

}  // namespace orb::ctl
