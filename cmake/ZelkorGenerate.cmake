# The C++ that follows from a schema is written at configure time, into the build tree, and again whenever the schema or
# a template changes. Files whose text stays the same are left alone.

# The generator needs Jinja2, which comes with the system's interpreter.
execute_process(COMMAND /usr/bin/python3 -c "import jinja2" RESULT_VARIABLE ZELKOR_SYSTEM_JINJA ERROR_QUIET)
if(ZELKOR_SYSTEM_JINJA EQUAL 0)
  set(ZELKOR_PYTHON /usr/bin/python3)
else()
  set(ZELKOR_PYTHON ${Python3_EXECUTABLE})
endif()

set(ZELKOR_GENERATOR ${PROJECT_SOURCE_DIR}/meta/generator)
file(GLOB ZELKOR_GENERATOR_FILES CONFIGURE_DEPENDS ${ZELKOR_GENERATOR}/*.py ${ZELKOR_GENERATOR}/templates/*)

# zelkor_generate(NAME SCHEMA_DIR ARGS...) sets NAME_INCLUDE and NAME_SOURCES.
function(zelkor_generate name schema)
  set(out ${CMAKE_BINARY_DIR}/generated/${name})
  file(GLOB_RECURSE chapters CONFIGURE_DEPENDS ${schema}/*.toml)
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${chapters}
                                                               ${ZELKOR_GENERATOR_FILES})
  execute_process(COMMAND ${ZELKOR_PYTHON} ${ZELKOR_GENERATOR}/render.py ${schema} ${out} ${ARGN}
                  RESULT_VARIABLE result ERROR_VARIABLE messages)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "the schema in ${schema} could not be rendered:\n${messages}")
  endif()
  file(STRINGS ${out}/sources.txt sources)
  list(TRANSFORM sources PREPEND ${out}/)
  set(${name}_INCLUDE ${out}/include PARENT_SCOPE)
  set(${name}_SOURCES ${sources} PARENT_SCOPE)
endfunction()

zelkor_generate(zelkor_kernel_meta ${CMAKE_CURRENT_SOURCE_DIR}/kernel/meta/schema --root brant/zero/meta
                --package-class ::brant::zero::meta::KernelPackage
                --package-header brant/zero/meta/KernelPackage.hpp --body ::brant::zero::MetaObject
                --body-header brant/zero/MetaObject.hpp)
zelkor_generate(zelkor_model ${CMAKE_CURRENT_SOURCE_DIR}/meta/schema --root zelkor/ast
                --package-class ::zelkor::ast::MetaPackageZelkor_ast
                --package-header zelkor/ast/MetaPackageZelkor_ast.hpp)
