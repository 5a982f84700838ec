// SPDX-License-Identifier: MIT
#include "Variants.h"

#include "control/Methods.h"
#include "endpoints/FaultRule.h"
#include "verbs/Verbs.h"

#include <stdexcept>

// Any call of a method of the control interface: arguments of the interface's types, as GLib checks them,
// with any values, and options of any names and types.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

GVariant* NewArgument(FuzzedDataProvider& input, char const* type)
{
    switch (type[0]) {
    case 'd': // any pattern of bits
        return g_variant_new_double(input.ConsumeBool() ? input.ConsumeFloatingPoint<double>()
                                                        : input.ConsumeFloatingPointInRange(-1.0, 1e6));
    case 'x':
        return g_variant_new_int64(input.ConsumeIntegral<gint64>());
    case 'u':
        return g_variant_new_uint32(input.ConsumeIntegral<guint32>());
    case 'b':
        return g_variant_new_boolean(input.ConsumeBool() ? TRUE : FALSE);
    default:
        return g_variant_new_string(ConsumeUtf8(input).c_str());
    }
}

/// An "a{sv}": the verb's own options, also more than once or of other types, and unknown ones.
GVariant* NewOptions(FuzzedDataProvider& input, verbs::Verb const& verb)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (int i = input.ConsumeIntegralInRange(0, 4); i > 0; --i) {
        auto const choice = input.ConsumeIntegralInRange<std::size_t>(0, 2 * verb.options.size());
        if (choice >= verb.options.size()) {
            std::string const name = choice == 2 * verb.options.size()
                                         ? ConsumeUtf8(input)
                                         : verb.options[choice - verb.options.size()].name;
            g_variant_builder_add(&builder, "{sv}", name.c_str(), fuzz::NewValue(input));
        } else {
            verbs::Option const& option = verb.options[choice];
            g_variant_builder_add(&builder, "{sv}", option.name,
                                  NewArgument(input, verbs::TypeOf(option.form)));
        }
    }
    return g_variant_builder_end(&builder);
}

/// Words for a value that the interface has accepted mean the same value.
void CheckWords(verbs::Form form, GVariant* value)
{
    std::string text;
    char number[G_ASCII_DTOSTR_BUF_SIZE];
    switch (verbs::TypeOf(form)[0]) {
    case 's':
        text = g_variant_get_string(value, nullptr);
        break;
    case 'b':
        text = g_variant_get_boolean(value) != FALSE ? "on" : "off";
        break;
    case 'd':
        text = g_ascii_dtostr(number, sizeof number, g_variant_get_double(value));
        break;
    case 'x':
        text = std::to_string(g_variant_get_int64(value));
        break;
    default:
        text = std::to_string(g_variant_get_uint32(value));
    }
    Owned<GVariant> const same = verbs::Parse(form, text);
    bool const isDouble = verbs::TypeOf(form)[0] == 'd'; // 0 and -0 are equal, and differ in their bytes
    Require(isDouble ? g_variant_get_double(same.get()) == g_variant_get_double(value)
                     : g_variant_equal(same.get(), value) != FALSE,
            "words mean what the interface accepts");
}

/// A fault, with the options of AddFault, is understood or refused.
void CheckFault(std::string const& text)
try {
    sim::FaultRule::Parse(text);
} catch (std::invalid_argument const& failure) {
    Require(std::string(failure.what()).rfind("cannot use the fault '" + text + "': ", 0) == 0,
            "the message quotes the refused text");
}

void CheckAccepted(verbs::Verb const& verb, GVariant* parameters)
{
    for (std::size_t i = 0; i < verb.arguments.size(); ++i) {
        Owned<GVariant> const value(g_variant_get_child_value(parameters, i));
        CheckWords(verb.arguments[i], value.get());
    }
    if (verb.options.empty()) {
        return;
    }
    if (std::string(verb.method) == "AddFault") {
        CheckFault(sim::FaultText(parameters));
    }
    Owned<GVariant> const options(g_variant_get_child_value(parameters, verb.arguments.size()));
    for (verbs::Option const& option : verb.options) {
        Owned<GVariant> const value(g_variant_lookup_value(options.get(), option.name, nullptr));
        if (value) {
            CheckWords(option.form, value.get());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    std::vector<verbs::Verb> const& all = verbs::Verbs();
    verbs::Verb const& verb = all[input.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
    GVariantBuilder tuple;
    g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
    for (verbs::Form const form : verb.arguments) {
        g_variant_builder_add_value(&tuple, NewArgument(input, verbs::TypeOf(form)));
    }
    if (!verb.options.empty()) {
        g_variant_builder_add_value(&tuple, NewOptions(input, verb));
    }
    Owned<GVariant> const parameters = SinkFloating(g_variant_builder_end(&tuple));
    try {
        verbs::Check(verb.method, parameters.get());
    } catch (std::invalid_argument const& failure) {
        std::string const text = failure.what();
        Require(IsUtf8(text), "an error is UTF-8: D-Bus carries it");
        Require(text.find(" is not ") != std::string::npos || text.find("; use ") != std::string::npos,
                "an error says what is accepted");
        return 0;
    }
    CheckAccepted(verb, parameters.get());
    return 0;
}
