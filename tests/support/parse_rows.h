#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <string>
#include <vector>

#include "parse/data_parser.h"

// One reply, the code it must give, and what the parser left in the outputs, as text.
struct ParsedRow {
    QByteArray reply;
    int result;
    std::string outputs;
};

// Runs every row on a fresh parser through `parse`, which returns the code and fills the text.
template <typename Parse>
void expectParsed(const std::vector<ParsedRow>& rows, Parse parse) {
    for (const ParsedRow& row : rows) {
        DataParser parser;
        std::string outputs;
        EXPECT_EQ(parse(parser, row.reply, outputs), row.result) << row.reply.constData();
        EXPECT_EQ(outputs, row.outputs) << row.reply.constData();
    }
}
