#include "service/batches.h"

#include "service/ledger.h"
#include "service/secrets.h"

namespace orvalo::service {

std::string Batches::Open(Connection& connection, std::int64_t account,
                          const MessageContent& content) {
  const auto id = NewId(clock_.Now());
  Query(connection,
        "INSERT INTO batch(id,account,text,type,unicode,parts,sender,delivery_minutes,ack) "
        "VALUES(?,?,?,?,?,?,?,?,?)",
        Blob{id}, account, content.text, content.type, content.unicode, content.parts,
        content.sender, content.delivery_minutes, content.ack)
      .Run();
  return ToHex(id);
}

std::optional<Batches::Batch> Batches::Find(Connection& connection, std::int64_t account,
                                            std::string_view id) {
  const auto bytes = FromHex(id);
  Query row(connection,
            "SELECT seq,ended,accepted,text,type,unicode,parts,sender,delivery_minutes,ack "
            "FROM batch WHERE id=? AND account=?",
            Blob{bytes}, account);
  if (!row.Step()) return std::nullopt;
  Batch batch{row.Int(0), row.Int(1) != 0, row.Int(2), {}};
  auto& content = batch.content;
  content.text = row.Text(3);
  content.type = static_cast<int>(row.Int(4));
  content.unicode = row.Int(5) != 0;
  content.parts = content.most_parts = static_cast<int>(row.Int(6));
  content.sender = row.Text(7);
  content.delivery_minutes = static_cast<int>(row.Int(8));
  content.ack = row.Int(9) != 0;
  return batch;
}

void Batches::CountAccepted(Connection& connection, const Batch& batch, std::int64_t more) {
  Query(connection, "UPDATE batch SET accepted=accepted+? WHERE seq=?", more, batch.row).Run();
}

void Batches::End(Connection& connection, const Batch& batch) {
  Query(connection, "UPDATE batch SET ended=1 WHERE seq=?", batch.row).Run();
}

}  // namespace orvalo::service
