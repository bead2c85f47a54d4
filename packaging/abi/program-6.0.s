# SPDX-License-Identifier: Apache-2.0
# What gcc 12 makes of program-6.0.c with the headers of release 6.0.
	.file	"program-6.0.c"
	.text
	.section	.rodata.str1.1,"aMS",@progbits,1
.LC1:
	.string	"account: %d"
.LC2:
	.string	" %d"
.LC3:
	.string	" %s %s %s %s %d\n"
	.section	.rodata
	.align 32
.LC0:
	.string	"eth1"
	.zero	11
	.string	"user@example"
	.zero	243
	.string	"pass'word"
	.zero	22
	.string	"1492"
	.zero	3
	.long	1
	.text
	.type	tellAccount, @function
tellAccount:
	pushq	%rbx
	subq	$640, %rsp
	leaq	320(%rsp), %rdi
	leaq	.LC0(%rip), %rsi
	movl	$39, %eax
	movq	%rax, %rcx
	rep movsq
	movq	%rcx, %rax
	movl	(%rsi), %edx
	movl	%edx, (%rdi)
	movq	%rsp, %rbx
	movl	$39, %ecx
	movq	%rbx, %rdi
	rep stosq
	movl	$0, (%rdi)
	leaq	320(%rsp), %rdi
	call	PPPoEConfigSet@PLT
	movl	%eax, %esi
	leaq	.LC1(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	%rbx, %rdi
	call	PPPoEConfigGet@PLT
	movl	%eax, %esi
	leaq	.LC2(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	leaq	272(%rsp), %rcx
	leaq	16(%rsp), %rdx
	movl	312(%rsp), %r9d
	leaq	304(%rsp), %r8
	movq	%rbx, %rsi
	leaq	.LC3(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	addq	$640, %rsp
	popq	%rbx
	ret
	.size	tellAccount, .-tellAccount
	.section	.rodata.str1.1
.LC4:
	.string	"eth0"
.LC5:
	.string	"subnet: %d"
.LC6:
	.string	" %d %d %s %s %s\n"
.LC7:
	.string	"ranges: %d"
.LC8:
	.string	" %s %s %s"
	.text
	.type	tellSubnet, @function
tellSubnet:
	pushq	%rbp
	pushq	%rbx
	subq	$2776, %rsp
	movq	$0, 8(%rsp)
	leaq	1392(%rsp), %rdx
	movl	$0, %eax
	movl	$172, %ecx
	movq	%rdx, %rdi
	rep stosq
	leaq	16(%rsp), %rbp
	movl	$172, %ecx
	movq	%rbp, %rdi
	rep stosq
	movl	$1, 1392(%rsp)
	movl	$3600, 1400(%rsp)
	movabsq	$3330471509296822577, %rax
	movq	%rax, 1404(%rsp)
	movabsq	$13563786668553518, %rbx
	movq	%rbx, 1411(%rsp)
	movq	%rax, 1450(%rsp)
	movabsq	$13565985691809070, %rbx
	movq	%rbx, 1457(%rsp)
	movabsq	$3329625989150225714, %rbx
	movq	%rbx, 2372(%rsp)
	movabsq	$13561604942736949, %rbx
	movq	%rbx, 2378(%rsp)
	movq	%rax, 2418(%rsp)
	movabsq	$13843058444351542, %rax
	movq	%rax, 2423(%rsp)
	movl	$812151909, 1496(%rsp)
	movq	%rdx, %rcx
	movl	$0, %edx
	movl	$0, %esi
	leaq	.LC4(%rip), %rbx
	movq	%rbx, %rdi
	call	DHCPTagConfSet@PLT
	movl	%eax, %esi
	leaq	.LC5(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	%rbp, %rcx
	movl	$0, %edx
	movl	$0, %esi
	movq	%rbx, %rdi
	call	DHCPTagConfGet@PLT
	movl	%eax, %esi
	leaq	.LC2(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	leaq	28(%rsp), %rcx
	leaq	1042(%rsp), %r9
	leaq	74(%rsp), %r8
	movl	24(%rsp), %edx
	movl	16(%rsp), %esi
	leaq	.LC6(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	leaq	8(%rsp), %rsi
	movq	%rbx, %rdi
	call	DHCPGetInterfaceRanges@PLT
	movl	%eax, %esi
	leaq	.LC7(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	8(%rsp), %rsi
	testq	%rsi, %rsi
	je	.L4
	leaq	32(%rsi), %rcx
	leaq	16(%rsi), %rdx
	leaq	.LC8(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
.L4:
	movl	$10, %edi
	call	putchar@PLT
	movq	8(%rsp), %rdi
	call	DHCPRangeFree@PLT
	addq	$2776, %rsp
	popq	%rbx
	popq	%rbp
	ret
	.size	tellSubnet, .-tellSubnet
	.section	.rodata.str1.1
.LC9:
	.string	"255.255.255.0"
.LC10:
	.string	"192.168.50.10"
.LC11:
	.string	"set: %d\n"
.LC13:
	.string	"%d ports\n"
.LC14:
	.string	"  %s %s %s link %d\n"
	.section	.rodata.str1.8,"aMS",@progbits,1
	.align 8
.LC15:
	.string	"nothing behind the records was written: %d\n"
	.section	.rodata.str1.1
.LC16:
	.string	"mode %d is %s\n"
.LC17:
	.string	"name servers: %d"
.LC18:
	.string	"192.168.50.1"
.LC19:
	.string	" %d\n"
.LC20:
	.string	"add"
.LC21:
	.string	"192.168.50.300"
.LC22:
	.string	"-4"
.LC23:
	.string	"no address: %d 0x%04X %s\n"
.LC24:
	.string	"{\"program\": \"6.0\"}"
.LC25:
	.string	"{\"host\": {\"name\": \"nas\"}}"
.LC26:
	.string	"change: %d\n"
.LC27:
	.string	"\"result\""
.LC28:
	.string	"a report: %d\n"
	.text
	.globl	main
	.type	main, @function
main:
	pushq	%r12
	pushq	%rbp
	pushq	%rbx
	subq	$16, %rsp
	leaq	.LC9(%rip), %rdx
	leaq	.LC10(%rip), %rsi
	leaq	.LC4(%rip), %rdi
	call	ZARNILnxSetIPNetmask@PLT
	movl	%eax, %esi
	leaq	.LC11(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movdqa	.LC12(%rip), %xmm0
	movaps	%xmm0, 1056+known(%rip)
	movaps	%xmm0, 1072+known(%rip)
	movaps	%xmm0, 1088+known(%rip)
	movaps	%xmm0, 1104+known(%rip)
	movl	$8, %esi
	leaq	known(%rip), %rdi
	call	KOPANetEthEnum@PLT
	movl	%eax, %ebp
	movl	%eax, %esi
	leaq	.LC13(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	testl	%ebp, %ebp
	jle	.L7
	leaq	known(%rip), %rbx
	movslq	%ebp, %rbp
	movq	%rbp, %rax
	salq	$5, %rax
	addq	%rbp, %rax
	leaq	(%rbx,%rax,4), %r12
	leaq	.LC14(%rip), %rbp
.L8:
	leaq	112(%rbx), %rcx
	leaq	22(%rbx), %rdx
	movl	92(%rbx), %r8d
	movq	%rbx, %rsi
	movq	%rbp, %rdi
	movl	$0, %eax
	call	printf@PLT
	addq	$132, %rbx
	cmpq	%r12, %rbx
	jne	.L8
.L7:
	leaq	1056+known(%rip), %rax
	leaq	64(%rax), %rdx
.L10:
	cmpb	$90, (%rax)
	jne	.L13
	addq	$1, %rax
	cmpq	%rdx, %rax
	jne	.L10
	movl	$1, %esi
	jmp	.L9
.L13:
	movl	$0, %esi
.L9:
	leaq	.LC15(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	leaq	32+grgBondDesc(%rip), %rbp
	movl	$1, %ebx
	leaq	.LC16(%rip), %r12
.L11:
	movq	0(%rbp), %rdx
	movl	%ebx, %esi
	movq	%r12, %rdi
	movl	$0, %eax
	call	printf@PLT
	addl	$1, %ebx
	addq	$24, %rbp
	cmpl	$9, %ebx
	jne	.L11
	call	tellAccount
	call	tellSubnet
	movl	$2, %edi
	call	KOPACSzListAlloc@PLT
	movq	%rax, 8(%rsp)
	leaq	8(%rsp), %r12
	movq	%r12, %rdi
	call	ZARNNetDNSListGet@PLT
	movl	%eax, %esi
	leaq	.LC17(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	leaq	.LC18(%rip), %rsi
	movq	8(%rsp), %rdi
	call	KOPACSzListFind@PLT
	movl	%eax, %esi
	leaq	.LC19(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	8(%rsp), %rdi
	call	KOPACSzListFree@PLT
	leaq	.LC20(%rip), %r8
	movl	$24, %ecx
	leaq	.LC21(%rip), %rdx
	leaq	.LC4(%rip), %rsi
	leaq	.LC22(%rip), %rdi
	call	ZARNNetSetIP@PLT
	movl	%eax, %ebx
	call	KOPACErrGet@PLT
	movzwl	%ax, %edi
	call	ZARNNetErrorName@PLT
	movq	%rax, %rbp
	call	KOPACErrGet@PLT
	movzwl	%ax, %edx
	movq	%rbp, %rcx
	movl	%ebx, %esi
	leaq	.LC23(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	$0, 8(%rsp)
	movq	%r12, %r8
	movl	$0, %ecx
	movl	$0, %edx
	leaq	.LC24(%rip), %rsi
	leaq	.LC25(%rip), %rdi
	call	ZARNNetChangeApply@PLT
	movl	%eax, %esi
	leaq	.LC26(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	8(%rsp), %rdi
	movl	$0, %esi
	testq	%rdi, %rdi
	je	.L12
	leaq	.LC27(%rip), %rsi
	call	strstr@PLT
	testq	%rax, %rax
	setne	%sil
	movzbl	%sil, %esi
.L12:
	leaq	.LC28(%rip), %rdi
	movl	$0, %eax
	call	printf@PLT
	movq	8(%rsp), %rdi
	call	ZARNNetChangeFree@PLT
	movl	$0, %eax
	addq	$16, %rsp
	popq	%rbx
	popq	%rbp
	popq	%r12
	ret
	.size	main, .-main
	.local	known
	.comm	known,1120,32
	.section	.rodata.cst16,"aM",@progbits,16
	.align 16
.LC12:
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.byte	90
	.ident	"GCC: (Debian 12.2.0-14+deb12u1) 12.2.0"
	.section	.note.GNU-stack,"",@progbits
