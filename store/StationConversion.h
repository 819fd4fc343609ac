#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace rillbook {

// A command of the user that may open stations. Where one of them is an Access file, the user is
// asked once, whatever their number, whether they are converted; at the end of the command's life
// one message tells what became of them. A command within another one is a part of it.
class ConversionCommand {
public:
    // `files`: those that the command is going to open, as far as it knows.
    explicit ConversionCommand(const QStringList& files = {});
    ~ConversionCommand();
    ConversionCommand(const ConversionCommand&) = delete;
    ConversionCommand& operator=(const ConversionCommand&) = delete;

    // Whether the file is one to be opened: any but an Access file that wasn't converted.
    // REQUIRES: no connection of this process has it open.
    bool MakeStation(const QString& path);

private:
    bool IsWanted(const QString& path);
    void Tell() const;

    ConversionCommand* outer_;
    QStringList files_;
    std::optional<bool> answer_;
    QStringList refused_;     // a sentence for each file
    QStringList remarkable_;  // converted, with something left behind
    QStringList converted_;
};

}  // namespace rillbook
