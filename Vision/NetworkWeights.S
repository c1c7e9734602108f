// The checkpoint of the network, as it is, among the constants of the program.
    .section .rodata
    .balign 16
    .global stillwickNetworkWeights
stillwickNetworkWeights:
    .incbin STILLWICK_NETWORK_WEIGHTS
    .global stillwickNetworkWeightsEnd
stillwickNetworkWeightsEnd:
    .section .note.GNU-stack, "", %progbits
