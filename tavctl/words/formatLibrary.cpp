// The part of the formatting library that is no template, and the templates that its headers
// declare to be elsewhere, compiled here once. In a file of ours rather than from the library's own
// binary, so that the program needs nothing beside it to run, on any system.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

template FMT_API auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template FMT_API auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;

template FMT_API locale_ref::locale_ref(const std::locale&);
template FMT_API auto locale_ref::get<std::locale>() const -> std::locale;

template FMT_API auto thousands_sep_impl(locale_ref) -> thousands_sep_result<char>;
template FMT_API auto decimal_point_impl(locale_ref) -> char;
template FMT_API void buffer<char>::append(const char*, const char*);
template FMT_API void vformat_to(buffer<char>&, string_view,
                                 basic_format_args<buffer_context<char>>, locale_ref);

} // namespace detail
FMT_END_NAMESPACE
