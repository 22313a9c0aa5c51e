# Run by cpack on the staged tree, before it is packed.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(tree ${usr}/lib/halvern)
file(RENAME ${tree}/share ${usr}/share)
file(MAKE_DIRECTORY ${usr}/bin)
file(CREATE_LINK ../lib/halvern/bin/halvern ${usr}/bin/halvern SYMBOLIC)
execute_process(COMMAND gzip -9n ${usr}/share/man/man1/halvern.1)
