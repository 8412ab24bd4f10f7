#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "core/process.h"
#include "editor_check/connection.h"
#include "editor_check/rules.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

constexpr double kNear = 0.01;  // Editors round lengths.
constexpr std::int64_t kNoObject = 2'147'483'647;
constexpr int kPages = 100;  // Of 200 objects each.

bool Lacks(const Verdict& verdict) {
  return verdict && !verdict->tried;
}

// A client at work on an object of its own.
class Author {
 public:
  explicit Author(const Subject& subject, std::string client = "zorvik_editor_check")
      : connection(subject, std::move(client)) {}

  // Connects, and finds an asset that the editor has, and a place where one stands.
  Verdict Start() {
    if (Verdict fault = connection.Open()) return fault;
    Exchange objects;
    if (Verdict fault = connection.Ask("objects.query", Json::Object({{"limit", 1}}), objects))
      return fault;
    const Json& first = objects.Result().At("objects")[0];
    asset = first.At("asset").text;
    // Where a child stands in the world, only `position` tells.
    const Json& place = first.Has("position") ? first.At("position") : first;
    x = place.At("x").number;
    z = place.At("z").number;
    if (!asset.empty()) return std::nullopt;
    Exchange assets;
    if (Verdict fault = connection.Ask("assets.list", Json::Object({{"limit", 1}}), assets))
      return fault;
    asset = assets.Result().At("assets")[0].At("id").text;
    return asset.empty() ? NotTried("neither objects.query nor assets.list shows an asset")
                         : std::nullopt;
  }

  Json CreateArgs() const {
    return Json::Object(
        {{"objects", Json::Array({Json::Object({{"asset", asset}, {"x", x}, {"z", z}})})}});
  }

  Verdict Create(Exchange& exchange) { return Create(CreateArgs(), exchange); }
  Verdict Create(Json args, Exchange& exchange) {
    if (Verdict fault = connection.Do("objects.create", std::move(args), exchange)) return fault;
    Adopt(exchange);
    return exchange.Require(id > 0, "`result.created`, a list of {`id`}");
  }
  // Takes what was created for its own object.
  void Adopt(const Exchange& created) {
    id = created.Result().At("created")[0].At("id").IntOr(0);
    creation = created.Result().At("transaction").At("id");
    base = created.Revision();
  }

  Json UpdateArgs(double to) const {
    return Json::Object({{"updates", Json::Array({Json::Object({{"id", id}, {"x", to}})})},
                         {"base_revision", base}});
  }
  Verdict Update(double to, Exchange& exchange) {
    return connection.Do("objects.update", UpdateArgs(to), exchange);
  }
  Verdict Delete(Exchange& exchange) {
    return connection.Do("objects.delete",
                         Json::Object({{"ids", Json::Array({id})}, {"base_revision", base}}),
                         exchange);
  }
  // An `x` so far from its own. Toward the middle, since the world may end on the other side.
  double Beside(double by) const { return x > 0 ? x - by : x + by; }

  Verdict Revert(const Exchange& change) {
    const Json& transaction = change.Result().At("transaction").At("id");
    if (Verdict fault =
            change.Require(transaction.IsInteger(), "`result.transaction` with its `id`"))
      return fault;
    Exchange exchange;
    return connection.Do("history.revert", Json::Object({{"transaction", transaction}}), exchange);
  }

  // Reads its object, by objects.get or, from an editor that lacks it, by objects.query. A null
  // when there is none.
  Verdict Find(Json& object, Exchange& read) {
    Verdict fault = connection.Do("objects.get", Json::Object({{"ids", Json::Array({id})}}), read);
    object = read.Result().At("objects")[0];
    if (!Lacks(fault)) return fault;
    Json args = Json::Object({{"limit", 200}});
    for (int page = 0; page < kPages; ++page) {
      fault = connection.Do("objects.query", args, read);
      if (Lacks(fault)) return NotTried("the editor has neither objects.get nor objects.query");
      if (fault) return fault;
      for (const Json& one : read.Result().At("objects").items)
        if (one.At("id").IntOr(0) == id) object = one;
      const std::string& cursor = read.Result().At("next_cursor").text;
      if (cursor.empty() || object.kind == Json::Kind::Object) return std::nullopt;
      args.Set("cursor", Json::Text(cursor));
    }
    return NotTried("there are too many objects to look for one without objects.get");
  }

  // Whether the object stands at `at`; NaN: whether there is none. `change` is blamed if not.
  Verdict Expect(const Exchange& change, double at) {
    Exchange read;
    Json object;
    if (Verdict fault = Find(object, read)) return fault;
    const bool gone = object.kind != Json::Kind::Object;
    if (std::isnan(at) ? gone : !gone && std::fabs(object.At("x").number - at) < kNear)
      return std::nullopt;
    const std::string name = "object " + std::to_string(id);
    return Finding{true, change.sent + ", then " + read.sent, read.came,
                   std::isnan(at) ? "no " + name : name + " with `x` " + std::to_string(at)};
  }

  Verdict WorldRevision(std::int64_t& revision) {
    Exchange exchange;
    Verdict fault = connection.Ask("world.info", Json::Object(), exchange);
    revision = exchange.Revision();
    return fault;
  }

  // Takes the object away again, as well as it goes.
  void Clean() {
    WorldRevision(base);
    Exchange exchange;
    if (Lacks(Delete(exchange)))
      connection.Ask("history.revert", Json::Object({{"transaction", creation}}), exchange);
  }

  Connection connection;
  std::string asset;
  double x = 0;
  double z = 0;
  std::int64_t id = 0;
  Json creation;          // The transaction's id.
  std::int64_t base = 0;  // The revision that it has read.
};

// Begins a rule with an object of its own, made by `exchange`, and ends it without.
template <class Rest>
Verdict WithObject(Subject& subject, Rest rest) {
  Author author(subject);
  Exchange created;
  if (Verdict fault = author.Start()) return fault;
  if (Verdict fault = author.Create(created)) return fault;
  Verdict verdict = rest(author, created);
  author.Clean();
  return verdict;
}

Verdict Created(Subject& subject) {
  return WithObject(
      subject,
      [](Author& author, const Exchange& created) { return author.Expect(created, author.x); });
}

Verdict Updated(Subject& subject) {
  return WithObject(
      subject,
      [](Author& author, const Exchange& /*created*/) {
        Exchange exchange;
        const double to = author.Beside(1);
        Verdict fault = author.Update(to, exchange);
        return fault ? fault : author.Expect(exchange, to);
      });
}

Verdict Deleted(Subject& subject) {
  return WithObject(
      subject,
      [](Author& author, const Exchange& /*created*/) {
        Exchange exchange;
        Verdict fault = author.Delete(exchange);
        return fault ? fault : author.Expect(exchange, NAN);
      });
}

Verdict Reverted(Subject& subject) {
  return WithObject(
      subject,
      [](Author& author, const Exchange& created) -> Verdict {
        // Undoes a change and looks where the object stands then.
        const auto undo = [&](const Exchange& change, double at) -> Verdict {
          if (Verdict fault = author.Revert(change)) return fault;
          return author.Expect({"history.revert of " + change.sent, {}, {}}, at);
        };
        if (Verdict fault = undo(created, NAN)) return fault;
        Exchange exchange;
        if (Verdict fault = author.Create(exchange)) return fault;
        for (const bool update : {true, false}) {
          Verdict fault =
              update ? author.Update(author.Beside(1), exchange) : author.Delete(exchange);
          if (Lacks(fault)) continue;
          if (!fault) fault = undo(exchange, author.x);
          if (!fault) fault = author.WorldRevision(author.base);
          if (fault) return fault;
        }
        return std::nullopt;
      });
}

Verdict RequestId(Subject& subject) {
  Author author(subject);
  if (Verdict fault = author.Start()) return fault;
  Json args = author.CreateArgs();
  args.Set("request_id", Json::Text("check:" + core::RandomHex(8)));
  Exchange first;
  if (Verdict fault = author.Create(args, first)) return fault;
  std::int64_t before = 0;
  if (Verdict fault = author.WorldRevision(before)) return fault;
  Exchange again;
  if (Verdict fault = author.connection.Do("objects.create", args, again)) return fault;
  std::int64_t after = 0;
  if (Verdict fault = author.WorldRevision(after)) return fault;
  if (after != before) author.Clean();
  if (Verdict fault = again.Require(after == before, "nothing changed, and the revision with it"))
    return fault;
  author.Clean();
  return again.Require(core::WriteJson(again.Result()) == core::WriteJson(first.Result()),
                       "the answer that was given first, " + first.came);
}

Verdict BaseRevision(Subject& subject) {
  return WithObject(
      subject,
      [](Author& author, const Exchange& /*created*/) -> Verdict {
        Json args = author.UpdateArgs(author.Beside(1));
        std::erase_if(
            args.fields, [](const Json::Field& field) { return field.first == "base_revision"; });
        Exchange exchange;
        if (Verdict fault = author.connection.Ask("objects.update", std::move(args), exchange))
          return fault;
        if (exchange.Code() == "unsupported")
          return NotTried("the editor doesn't have objects.update");
        if (Verdict fault =
                exchange.Require(!exchange.Ok() && exchange.Code() == "base_revision_required",
                                 "`ok` false with the code `base_revision_required`"))
          return fault;
        return author.Expect(exchange, author.x);
      });
}

Verdict Conflict(Subject& subject) {
  return WithObject(
      subject,
      [&](Author& author, const Exchange& created) -> Verdict {
        Author other(subject, "zorvik_editor_check 2");
        if (Verdict fault = other.connection.Open()) return fault;
        other.id = author.id;
        other.base = created.Revision();
        Exchange exchange;
        if (Verdict fault = other.Update(author.Beside(1), exchange)) return fault;
        if (Verdict fault = author.connection.Ask("objects.update",
                                                  author.UpdateArgs(author.Beside(2)), exchange))
          return fault;
        if (Verdict fault = exchange.Require(!exchange.Ok() && exchange.Code() == "conflict",
                                             "`ok` false with the code `conflict`"))
          return fault;
        return author.Expect(exchange, author.Beside(1));
      });
}

Verdict Batch(Subject& subject) {
  Author author(subject);
  if (Verdict fault = author.Start()) return fault;
  std::int64_t before = 0;
  Exchange objects;
  if (Verdict fault = author.connection.Do("objects.query", Json::Object(), objects)) return fault;
  if (Verdict fault = author.WorldRevision(before)) return fault;
  Json bad = Json::Object({{"ids", Json::Array({kNoObject})}});
  Exchange exchange;
  if (Verdict fault = author.connection.Ask(
          "batch.apply",
          Json::Object(
              {{"ops",
                Json::Array(
                    {Json::Object({{"tool", "objects_create"}, {"args", author.CreateArgs()}}),
                     Json::Object({{"tool", "objects_delete"}, {"args", std::move(bad)}})})},
               {"base_revision", before}}),
          exchange))
    return fault;
  if (exchange.Code() == "unsupported") return NotTried("the editor doesn't have batch.apply");
  if (Verdict fault = exchange.Require(!exchange.Ok(), "`ok` false: there is no such object"))
    return fault;
  std::int64_t after = 0;
  if (Verdict fault = author.WorldRevision(after)) return fault;
  if (Verdict fault =
          exchange.Require(after == before, "the revision " + std::to_string(before) +
                                                " as before, and not " + std::to_string(after)))
    return fault;
  Exchange afterwards;
  if (Verdict fault = author.connection.Do("objects.query", Json::Object(), afterwards))
    return fault;
  return exchange.Require(core::WriteJson(objects.Result().At("total")) ==
                              core::WriteJson(afterwards.Result().At("total")),
                          "as many objects as before");
}

Verdict RevisionGrows(Subject& subject) {
  std::int64_t last = 0;
  {
    Connection connection(subject);
    Exchange exchange;
    if (Verdict fault = connection.Open()) return fault;
    if (Verdict fault = connection.Ask("world.info", Json::Object(), exchange)) return fault;
    last = exchange.Revision();
  }
  return WithObject(subject, [&](Author& author, Exchange& exchange) -> Verdict {
    // The creation, then what else the editor has.
    for (const int change : {0, 1, 2}) {
      Verdict fault;
      if (change == 1) fault = author.Update(author.Beside(1), exchange);
      if (change == 2) fault = author.Delete(exchange);
      if (Lacks(fault)) continue;
      if (!fault)
        fault = exchange.Require(exchange.Revision() > last,
                                 "a `revision` above " + std::to_string(last));
      if (fault) return fault;
      last = exchange.Revision();
    }
    if (Verdict fault = author.connection.Ask("world.info", Json::Object(), exchange)) return fault;
    return exchange.Require(exchange.Revision() >= last,
                            "a `revision` of " + std::to_string(last) + " or above");
  });
}

Verdict TwoClients(Subject& subject) {
  Author one(subject, "zorvik_editor_check 1");
  Author other(subject, "zorvik_editor_check 2");
  if (Verdict fault = one.Start()) return fault;
  if (Verdict fault = other.Start()) return fault;
  Json args = one.CreateArgs();
  args.Set("request_id", Json::Text("check:" + core::RandomHex(8)));
  Exchange first;
  Exchange second;
  const std::int64_t first_id = one.connection.Begin("objects.create", args);
  const std::int64_t second_id = other.connection.Begin("objects.create", args);
  if (Verdict fault = one.connection.Await(first_id, first)) return fault;
  if (Verdict fault = other.connection.Await(second_id, second)) return fault;
  one.Adopt(first);
  other.Adopt(second);
  one.Clean();
  if (other.id != one.id) other.Clean();
  return second.Require(one.id > 0 && other.id > 0 && one.id != other.id,
                        "an object of its own for each client");
}

constexpr auto kRules = std::to_array<Rule>({
    {"change.create", "An object that was created is there, and `created` tells its `id`.",
     "hello.accepted", Created},
    {"change.update", "An object that was updated is as the update says.", "change.create",
     Updated},
    {"change.delete", "An object that was deleted is gone.", "change.create", Deleted},
    {"change.revert",
     "`history.revert` takes a creation back by `transaction.id`, and an update and a deletion "
     "where "
     "the editor has them.",
     "change.create", Reverted},
    {"change.request_id",
     "A repeated `request_id` gets the stored answer, and nothing is applied again.",
     "change.create", RequestId},
    {"change.base_revision",
     "Changing what exists without `base_revision` is refused with `base_revision_required`.",
     "change.create", BaseRevision},
    {"change.conflict",
     "A change of what another client changed after `base_revision` is refused with `conflict`.",
     "change.update connection.several", Conflict},
    {"change.batch", "A batch that fails leaves no trace.", "change.create", Batch},
    {"change.revision", "`revision` grows with each change and never shrinks.", "change.create",
     RevisionGrows},
    {"change.clients",
     "Two clients may change at once, and may use the same `request_id` without getting each "
     "other's answer.",
     "change.create connection.several", TwoClients},
});

}  // namespace

std::span<const Rule> ChangeRules() {
  return kRules;
}

}  // namespace zorvik::editor_check
