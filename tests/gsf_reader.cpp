#include "tests/gsf_reader.h"

#include <gsf/gsf-doc-meta-data.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-meta-names.h>
#include <gsf/gsf-msole-utils.h>
#include <gsf/gsf-utils.h>

#if defined(__SANITIZE_ADDRESS__)
#define VESKOR_LEAK_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VESKOR_LEAK_CHECKED 1
#endif
#endif
#ifdef VESKOR_LEAK_CHECKED
#include <sanitizer/lsan_interface.h>
#endif

namespace {

std::optional<std::string> descriptionOf(GsfDocMetaData* meta) {
    GsfDocProp* prop = gsf_doc_meta_data_lookup(meta, GSF_META_NAME_DESCRIPTION);
    const GValue* value = prop ? gsf_doc_prop_get_val(prop) : nullptr;
    if (!value || !G_VALUE_HOLDS_STRING(value))
        return std::nullopt;
    const char* text = g_value_get_string(value);
    return std::string(text ? text : "");
}

}  // namespace

std::optional<std::string> commentsReadByLibgsf(std::string_view stream) {
#ifdef VESKOR_LEAK_CHECKED
    // libgsf leaks a converter for each code page a set declares beyond the first;
    // its leaks are not ours to report.
    __lsan::ScopedDisabler libgsfLeaks;
#endif
    // libgsf's warnings about odd streams only say what its answer says.
    static const bool initialised = [] {
        gsf_init();
        g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {},
                                  nullptr);
        return true;
    }();
    (void)initialised;
    // libgsf reads from the buffer without taking it over.
    GsfInput* input = gsf_input_memory_new(reinterpret_cast<const guint8*>(stream.data()),
                                           static_cast<gsf_off_t>(stream.size()), FALSE);
    if (!input)
        return std::nullopt;
    GsfDocMetaData* meta = gsf_doc_meta_data_new();
    std::optional<std::string> text;
    if (GError* error = gsf_doc_meta_data_read_from_msole(meta, input))
        g_error_free(error);
    else
        text = descriptionOf(meta);
    g_object_unref(meta);
    g_object_unref(input);
    return text;
}
