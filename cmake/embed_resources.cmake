# Writes OUTPUT, a C++ file with the contents of FILES as `veyla::embeddedResources`.
set(entries "")
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${hex}")
  # Compilers limit the length of one literal; pieces that follow each other become one.
  string(REGEX REPLACE "((\\\\x[0-9a-f][0-9a-f])(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?)" "\"\\1\"\n" bytes "${bytes}")
  string(APPEND entries "      {\"${name}\", std::string_view(\n${bytes}, ")
  file(SIZE ${file} size)
  string(APPEND entries "${size})},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"platform/portable/embedded_resources.h\"

namespace veyla {

const std::map<std::string_view, std::string_view>& embeddedResources() {
  static const std::map<std::string_view, std::string_view> resources{
${entries}  };
  return resources;
}

}  // namespace veyla
")
