#pragma once

#include "platform/AsyncReader.h"
#include "record/Tape.h"

namespace corvane {

/// Stands before the reader of a site and takes down what is asked for and how it ends, without content or account. It
/// owns neither reader nor tape.
class RecordedReader : public AsyncReader {
public:
    RecordedReader(AsyncReader& reader, Tape& tape);
    ~RecordedReader() override;
    RecordedReader(const RecordedReader&) = delete;
    RecordedReader& operator=(const RecordedReader&) = delete;

    void start(const Address& address, const std::string& propertyName) override;
    void cancel(const std::optional<std::string>& propertyName) override;
    void closeSession() override;
    void route(const SiteRoute& route) override { reader_.route(route); }
    void mostBytes(std::int64_t most) override { reader_.mostBytes(most); }
    std::string remark() const override { return reader_.remark(); }
    ReadFailure failure() const override { return reader_.failure(); }

private:
    AsyncReader& reader_;
    Tape& tape_;
};

}  // namespace corvane
