# cmake -DFILES=a;b -DNAME=x -DOUTPUT=X.hpp -P ContentStamp.cmake
# Writes a header with a text that changes with the content of the files, whoever changes them and whatever the version.
set(digests "")
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  file(SHA256 "${file}" digest)
  list(APPEND digests "${name} ${digest}")
endforeach()
list(SORT digests)
string(SHA256 stamp "${digests}")
string(SUBSTRING "${stamp}" 0 16 stamp)
file(CONFIGURE OUTPUT "${OUTPUT}" CONTENT "#pragma once\n\ninline constexpr char ${NAME}[] = \"${stamp}\";\n")
