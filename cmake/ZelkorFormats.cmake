# The descriptions of the two text forms follow from the schema as the classes do, at configure time.
# Sets ZELKOR_FORMATS_DIR, where they lie in the build tree. Needs ZelkorGenerate.

set(ZELKOR_FORMATS_DIR ${CMAKE_BINARY_DIR}/generated/formats)
execute_process(COMMAND ${ZELKOR_PYTHON} ${ZELKOR_GENERATOR}/formats.py ${CMAKE_CURRENT_SOURCE_DIR}/meta/schema
                        ${ZELKOR_FORMATS_DIR} --name zelkor-ast
                RESULT_VARIABLE result ERROR_VARIABLE messages)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the descriptions of the text forms could not be written:\n${messages}")
endif()

include(GNUInstallDirs)
install(FILES ${ZELKOR_FORMATS_DIR}/zelkor-ast.schema.json ${ZELKOR_FORMATS_DIR}/zelkor-ast.xsd
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zelkor-ast)
